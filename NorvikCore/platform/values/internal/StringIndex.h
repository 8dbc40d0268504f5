// NorvikCore/platform/values/internal/StringIndex.h - the positions of a text's UTF-16 units among its UTF-8 bytes.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace norvik {
class NSString;
}

namespace norvik::detail {

/// The character that contains a unit, and whether the unit is its second half. The end of the text also has a place.
struct StringPlace {
  std::size_t byte = 0;
  bool secondHalf = false;
};

/// The place that is `units` after `from`, found by counting the units of eight bytes at a time. `steps`, if given, is
/// raised by the number of bytes that were counted.
[[nodiscard]] NK_EXPORT_FOR_TESTS StringPlace walkUnits(std::string_view text, StringPlace from, std::size_t units,
                                                        std::size_t* steps = nullptr) noexcept;

/// The places of every 16th unit of a text: a look-up walks at most 16 units from the nearest earlier place, which are
/// 48 bytes or fewer. Takes an eighth of a byte for each unit. It does not keep the text; each call must pass the same
/// text. Immutable.
class NK_EXPORT_FOR_TESTS StringIndex {
 public:
  static constexpr std::size_t stride = 16;
  /// Text of fewer bytes is walked without an index.
  static constexpr std::size_t smallestIndexed = 257;

  explicit StringIndex(std::string_view text);

  [[nodiscard]] std::size_t length() const noexcept { return length_; }
  /// `unit` is at most the length.
  [[nodiscard]] StringPlace place(std::string_view text, std::size_t unit, std::size_t* steps = nullptr) const noexcept;
  /// The first unit of the character that begins at `byte`.
  [[nodiscard]] std::size_t unit(std::string_view text, std::size_t byte) const noexcept;

 private:
  /// The units of a block have at most three bytes each, so a place in it fits a mark.
  static constexpr std::size_t blockUnits = 8192;
  static constexpr std::size_t marksPerBlock = blockUnits / stride;

  [[nodiscard]] StringPlace placeOfMark(std::size_t mark) const noexcept {
    return {blocks_[mark / marksPerBlock] + marks_[mark] / 2, marks_[mark] % 2 != 0};
  }

  std::vector<std::size_t> blocks_;  ///< the byte at which the character with the block's first unit begins
  std::vector<std::uint16_t>
      marks_;  ///< twice the distance from there, in bytes; odd for the second half of a character
  std::size_t length_;
};

/// The index of text that is never freed. The first use makes it; it is kept until the process ends.
[[nodiscard]] NK_EXPORT_FOR_TESTS const StringIndex& permanentIndex(std::string_view text);

/// The index that a counted text has made so far; null if none was needed yet.
[[nodiscard]] NK_EXPORT_FOR_TESTS const StringIndex* stringIndexOf(const NSString& text);

}  // namespace norvik::detail
