// programs/norvik-log/Terminal.h - properties of standard output, and the standard streams.
#pragma once

#include <sys/stat.h>

#include <cstddef>

#include "Arguments.h"

namespace norvik_log {

[[nodiscard]] bool isTerminal();
/// The width in cells. If standard output is not a terminal, COLUMNS or 80.
[[nodiscard]] std::size_t outputWidth();
[[nodiscard]] bool hasColours(Arguments::Colour wanted);
/// True if the file is a regular one that standard output writes to. Reading it would never end.
[[nodiscard]] bool isStandardOutput(const struct stat& file);
/// Opens the standard streams that are closed, so that a file that is opened later does not take the place of one.
/// Reading from or writing to such a stream fails.
void holdStandardStreams();

}  // namespace norvik_log
