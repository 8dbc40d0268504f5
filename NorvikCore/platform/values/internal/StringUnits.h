// NorvikCore/platform/values/internal/StringUnits.h - reads text as UTF-16 units, with or without case folding.
#pragma once

#include "NorvikCore/platform/values/Utf8.h"
#include "NorvikCore/platform/values/internal/CaseFolding.h"

#include <compare>
#include <string_view>
#include <utility>

namespace norvik::detail {

class StringUnits {
 public:
  StringUnits(std::string_view text, bool folded) noexcept
      : at_(text.data()), end_(text.data() + text.size()), folded_(folded) {}

  static constexpr int end = -1;

  /// The next unit, or `end`.
  int next() noexcept {
    if (secondHalf_ != 0) return std::exchange(secondHalf_, 0);
    if (at_ == end_) return end;
    const utf8::Character character = utf8::decode(at_);
    at_ += character.size;
    const char32_t point = folded_ ? foldCase(character.point) : character.point;
    if (point < 0x10000) return static_cast<int>(point);
    secondHalf_ = utf8::lowHalf(point);
    return utf8::highHalf(point);
  }

 private:
  const char* at_;
  const char* end_;
  bool folded_;
  int secondHalf_ = 0;
};

[[nodiscard]] inline std::strong_ordering compareUnits(std::string_view a, std::string_view b, bool folded) noexcept {
  StringUnits left(a, folded), right(b, folded);
  while (true) {
    const int l = left.next(), r = right.next();
    if (l != r || l == StringUnits::end) return l <=> r;
  }
}

}  // namespace norvik::detail
