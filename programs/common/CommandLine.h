// programs/common/CommandLine.h - checks of the words of a command line, for better messages about mistakes.
#pragma once

#include <string>
#include <string_view>

namespace programs {

/// The word up to its first = or :, with ... in place of the rest, because the rest may be a password.
[[nodiscard]] std::string withoutValue(std::string_view word);

/// True if a path begins with "~" for the home folder. A shell replaces "~" at the beginning of a word but not in
/// --logs=~/x, and the program would create a folder named "~". "./~" names such a folder on purpose.
[[nodiscard]] bool beginsWithTilde(std::string_view path) noexcept;

}  // namespace programs
