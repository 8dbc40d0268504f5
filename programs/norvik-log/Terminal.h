// programs/norvik-log/Terminal.h - what standard output is.
#pragma once

#include <sys/stat.h>

#include <cstddef>

#include "Arguments.h"

namespace norvik_log {

[[nodiscard]] bool isTerminal();
/// In cells; 80 where it is no terminal and COLUMNS does not say.
[[nodiscard]] std::size_t outputWidth();
[[nodiscard]] bool hasColours(Arguments::Colour wanted);
/// Whether the file is a regular one to which standard output goes: what is read from it would never end.
[[nodiscard]] bool isStandardOutput(const struct stat& file);
/// Opens the standard streams that are closed, so that no file which is opened later is taken for one of them. Reading
/// or writing such a stream fails.
void holdStandardStreams();

}  // namespace norvik_log
