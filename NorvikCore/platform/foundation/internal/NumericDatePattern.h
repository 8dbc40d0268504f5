// NorvikCore/platform/foundation/internal/NumericDatePattern.h - date patterns of digits only, compiled once, written
// in tens of nanoseconds.
//
//   const auto stamp = NumericDatePattern::compile("yyyy/MM/dd HH:mm:ss:SSS");
//   char text[NumericDatePattern::maximalLength];
//   stamp->write(text, fields);         // "2021/05/10 13:14:15:016"
//
// The pattern language is Unicode's. Fields that print as a number in every Latin locale are known: y Y M L d D H h K k
// m s S w, and Z as "+0100". Years must be 1 to 9999.
//
// A value, immutable: safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::detail {

class NK_EXPORT NumericDatePattern {
 public:
  /// What is to be written: a local time, split.
  struct Fields {
    std::int64_t day = 0;  ///< a reference day of local time
    std::int32_t secondOfDay = 0;
    std::int32_t millisecond = 0;
    std::int32_t offset = 0;                         ///< seconds from UTC, for Z
    std::int32_t firstWeekday = 2, minimumDays = 4;  ///< for Y and w
  };

  /// Patterns whose text could be longer are not compiled.
  static constexpr std::size_t maximalLength = 256;

  /// Nothing where the pattern has any other field, is malformed, or is too long.
  [[nodiscard]] static std::optional<NumericDatePattern> compile(std::string_view pattern);

  /// The pattern shows the week or the year that it belongs to.
  [[nodiscard]] bool needsWeek() const noexcept { return needsWeek_; }

  /// Writes the text and returns its length; 0 where the fields are beyond what is known here, a year of five digits or
  /// an offset with seconds. The text of an empty pattern has length 0 too.
  std::size_t write(char (&text)[maximalLength], const Fields& fields) const noexcept;

 private:
  NumericDatePattern() = default;

  /// A field of a number of digits, or a stretch of the literal text.
  struct Item {
    char field;  // 0 for text
    std::uint8_t size;
    std::uint16_t start;
  };

  std::vector<Item> items_;
  std::string literals_;
  bool needsWeek_ = false, needsDayOfYear_ = false, needsOffset_ = false;
};

}  // namespace norvik::detail
