// programs/common/CommandLine.h - words of the command line, as people mistype them.
#pragma once

#include <string>
#include <string_view>

namespace programs {

/// The word up to its first = or :, with ... for what follows: that may be a password.
[[nodiscard]] std::string withoutValue(std::string_view word);

/// Whether a path begins with "~" for the home folder: a shell replaces that at the beginning of a word, but not in
/// --logs=~/x, and a folder of that name would be made. "./~" is such a folder.
[[nodiscard]] bool beginsWithTilde(std::string_view path) noexcept;

}  // namespace programs
