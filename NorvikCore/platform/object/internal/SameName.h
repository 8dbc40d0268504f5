// NorvikCore/platform/object/internal/SameName.h - compares the names of keys.
//
// Like `a == b`, but without a call: keys are short, and most comparisons find them equal.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace norvik::detail {

inline bool isSameName(std::string_view a, std::string_view b) noexcept {
  const std::size_t size = a.size();
  if (size != b.size()) return false;
  const auto isSameWord = [&]<class Word>(Word word, std::size_t at) {
    Word other{};
    std::memcpy(&word, a.data() + at, sizeof word);
    std::memcpy(&other, b.data() + at, sizeof other);
    return word == other;
  };
  // The last word may overlap the one before it.
  if (size >= 8 && size <= 16) return isSameWord(std::uint64_t{}, 0) && isSameWord(std::uint64_t{}, size - 8);
  if (size >= 4 && size < 8) return isSameWord(std::uint32_t{}, 0) && isSameWord(std::uint32_t{}, size - 4);
  return a == b;
}

}  // namespace norvik::detail
