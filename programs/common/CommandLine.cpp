#include "programs/common/CommandLine.h"

namespace programs {

std::string withoutValue(std::string_view word) {
  const std::size_t end = word.find_first_of(":=");
  return end == word.npos || end + 1 == word.size() ? std::string(word) : std::string(word.substr(0, end + 1)) + "...";
}

bool beginsWithTilde(std::string_view path) noexcept { return path == "~" || path.starts_with("~/"); }

}  // namespace programs
