// programs/norvik-log/ByteSearch.h - finds a text in large blocks: two of its bytes are compared at 16 places at once,
// and the whole text only where both are there.
#pragma once

#include <cstddef>
#include <string>

namespace norvik_log {

class ByteSearch {
 public:
  /// The two bytes are those that are rare in logs.
  explicit ByteSearch(std::string text);

  /// Where the text first is, or null. An empty one is at `begin`.
  [[nodiscard]] const char* find(const char* begin, const char* end) const noexcept;

 private:
  std::string text_;
  std::size_t first_ = 0, second_ = 0;  // the two bytes' places, in order
};

}  // namespace norvik_log
