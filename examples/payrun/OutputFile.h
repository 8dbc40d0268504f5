// examples/payrun/OutputFile.h - files that are there in whole or not at all.
#pragma once

#include <filesystem>
#include <string_view>

namespace payrun {

/// Writes `text` beside `path` and gives it that name once all of it is on disk; replaces a file of that name, or the
/// one that a link of that name leads to, and takes over its permissions. What is no file, such as a pipe or /dev/null,
/// is written to as it is. Throws std::system_error, and then leaves nothing behind.
void writeWhole(const std::filesystem::path& path, std::string_view text);

/// Writes all of `text` to standard output. Throws std::system_error.
void printWhole(std::string_view text);

}  // namespace payrun
