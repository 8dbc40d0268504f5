// NorvikCore/platform/foundation/internal/DatePattern.h - date patterns of digits and names: compiled once, written in
// tens of nanoseconds.
//
//   const auto stamp = DatePattern::compile("yyyy/MM/dd HH:mm:ss:SSS");
//   char text[DatePattern::maximalLength];
//   std::size_t at = 0;
//   stamp->write(text, fields, &at);                // "2021/05/10 13:14:15:016"
//   DatePattern::writeMillisecond(text + at, 17);   // "2021/05/10 13:14:15:017": another time of the same second
//
// The pattern language is Unicode's. Supported are the fields that are written as a number in every Latin locale (y Y M
// L d D H h K k m s S w Q q, and Z as "+0100") and, if names are given, the fields written in a locale's words: months,
// weekdays, quarters, halves of the day and eras. Years must be 1 to 9999.
//
// Immutable value: safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::detail {

struct DateNames;

class NK_EXPORT_FOR_TESTS DatePattern {
 public:
  /// The input: a local time, split into fields.
  struct Fields {
    std::int64_t day = 0;  ///< a reference day of local time
    std::int32_t secondOfDay = 0;
    std::int32_t millisecond = 0;
    std::int32_t offset = 0;                         ///< seconds from UTC, for Z
    std::int32_t firstWeekday = 2, minimumDays = 4;  ///< for Y and w
  };

  /// Patterns whose text could be longer are refused.
  static constexpr std::size_t maximalLength = 256;

  /// Nothing if the pattern has any other field, is malformed, or is too long. Names are copied.
  [[nodiscard]] static std::optional<DatePattern> compile(std::string_view pattern, const DateNames* names = nullptr);

  /// The pattern has the week or the year that it belongs to.
  [[nodiscard]] bool needsWeek() const noexcept { return needsWeek_; }

  /// Within a second only the three digits of the millisecond change: the pattern has SSS once, or no S.
  [[nodiscard]] bool isSteadyWithinSecond() const noexcept { return isSteadyWithinSecond_; }

  /// Writes the text and returns its length; 0 if the fields are out of range (a year of five digits, an offset with
  /// seconds). The text of an empty pattern has length 0 too. `millisecondAt` is set to the position of the millisecond
  /// in the text, and left unchanged if the text has none.
  std::size_t write(char (&text)[maximalLength], const Fields& fields,
                    std::size_t* millisecondAt = nullptr) const noexcept;
  /// Overwrites the three digits of another millisecond.
  static void writeMillisecond(char* text, std::int32_t millisecond) noexcept;

 private:
  DatePattern() = default;
  void formPairs();
  std::size_t writePairs(char* text, const Fields& fields) const noexcept;
  std::size_t writeItems(char* text, const Fields& fields, std::size_t* millisecondAt) const noexcept;

  enum class Kind : std::uint8_t { Text, Number, Name, Pair };
  /// A piece of literal text, a field of digits, a field in words, or a pair: a number of two digits, with the sign
  /// behind it. Most patterns consist of pairs, which are written without a decision for each.
  struct Item {
    Kind kind;
    char field;           // of a Number or Name; the sign of a Pair
    std::uint8_t size;    // of the Pair with its sign: 2 or 3
    std::uint16_t start;  // of Text, in the literals; the first word of a Name; which number of a Pair
  };
  struct Word {
    std::uint16_t start, size;
  };

  std::vector<Item> items_;
  std::vector<Word> words_;
  std::string literals_;  // including the words
  bool needsWeek_ = false, needsOffset_ = false, isSteadyWithinSecond_ = true, hasOnlyPairs_ = false;
};

}  // namespace norvik::detail
