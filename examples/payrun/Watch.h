// examples/payrun/Watch.h - a pay run that continues to run, and pays again whenever the employer's files change.
#pragma once

#include "Arguments.h"
#include "StopSignals.h"

namespace payrun {

/// Prints the report or writes it to the output file. After each change of the input files, it prints which payslips
/// changed and the new totals, and writes the output file again. Several saves within 0.2 s are read once. Invalid
/// files are reported, and the last valid state is kept until they change again.
///
/// Returns after SIGINT or SIGTERM. Throws the exceptions of the first reading, and std::system_error if something
/// other than the input fails. Called on the main thread.
void watch(const Arguments& arguments, StopSignals& signals);

}  // namespace payrun
