// examples/payrun/Watch.h - the pay run that stays: pays anew whenever the employer's files change.
#pragma once

#include "Arguments.h"
#include "StopSignals.h"

namespace payrun {

/// Prints the report, or writes it to the output file; then, after each change of the input files, prints which
/// payslips changed and the new totals, and writes the output file anew. Saves that follow one another within 0.2 s are
/// read once. Files that cannot be followed are reported, and everything stays as it was until they change again.
///
/// Returns once SIGINT or SIGTERM came. Throws what reading for the first time throws, and std::system_error where
/// something outside of the input fails. Called on the main thread.
void watch(const Arguments& arguments, StopSignals& signals);

}  // namespace payrun
