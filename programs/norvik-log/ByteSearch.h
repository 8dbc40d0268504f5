// programs/norvik-log/ByteSearch.h - finds a text in large blocks. It compares two bytes of the text at 16 positions at
// once, and the whole text only where both bytes match.
#pragma once

#include <cstddef>
#include <string>

namespace norvik_log {

class ByteSearch {
 public:
  /// Chooses the two bytes of the text that are rarest in logs.
  explicit ByteSearch(std::string text);

  /// The first occurrence of the text, or null. An empty text is found at `begin`.
  [[nodiscard]] const char* find(const char* begin, const char* end) const noexcept;

 private:
  std::string text_;
  std::size_t first_ = 0, second_ = 0;  // the positions of the two bytes in the text, ascending
};

}  // namespace norvik_log
