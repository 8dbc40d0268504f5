// NorvikCore/platform/foundation/internal/PosixZoneRule.h - the yearly rule of a time zone, such as
// "GMT0BST,M3.5.0/1,M10.5.0".
//
// The form is that of the TZ environment variable and of the last line of a zone file: standard time, summer time if
// there is one, and the start and end of summer time in each year. Instants are seconds since the reference date.
#pragma once

#include "NorvikCore/platform/export.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The local time that is in force for a while.
struct ZoneType {
  std::int32_t offset = 0;  ///< seconds to add to UTC
  bool isDaylight = false;
  std::string abbreviation;

  friend bool operator==(const ZoneType&, const ZoneType&) = default;
};

/// A period in which one type is in force, from `from` (inclusive) to `until` (exclusive). The minimum and maximum of
/// the integer type mean that it has no start or no end.
struct ZoneSpan {
  std::int64_t from = INT64_MIN;
  std::int64_t until = INT64_MAX;
  const ZoneType* type = nullptr;
};

class NK_EXPORT_FOR_TESTS PosixZoneRule {
 public:
  /// The rule written in the text; nothing unless the whole text is a rule.
  [[nodiscard]] static std::optional<PosixZoneRule> parse(std::string_view text);

  [[nodiscard]] const ZoneType& typeAt(std::int64_t instant) const noexcept;
  [[nodiscard]] ZoneSpan spanAt(std::int64_t instant) const noexcept;

  [[nodiscard]] const ZoneType& standardType() const noexcept { return standard_; }

 private:
  friend class PosixZoneRuleReader;

  /// A day of the year and a time on it, in seconds of the local time before the change.
  struct Change {
    enum class Kind : std::uint8_t { JulianWithoutLeapDay, ZeroBasedDay, MonthWeekDay };
    Kind kind = Kind::MonthWeekDay;
    std::int32_t month = 1, week = 1;
    std::int32_t day = 0;  // weekday (0 is Sunday) or day of the year
    std::int32_t time = 7200;

    [[nodiscard]] std::int64_t localSecondsIn(std::int64_t year) const noexcept;
  };

  [[nodiscard]] std::int64_t localYearAt(std::int64_t instant) const noexcept;
  [[nodiscard]] std::int64_t startIn(std::int64_t year) const noexcept;
  [[nodiscard]] std::int64_t endIn(std::int64_t year) const noexcept;
  [[nodiscard]] const ZoneType& type(bool isDaylight) const noexcept { return isDaylight ? daylight_ : standard_; }
  [[nodiscard]] ZoneSpan spanOfPlainRule(std::int64_t instant) const noexcept;
  [[nodiscard]] ZoneSpan spanOfOddRule(std::int64_t instant) const noexcept;

  ZoneType standard_, daylight_;
  bool hasDaylight_ = false;
  bool isPlain_ = false;  // the changes are in different months, not in January or December
  Change start_, end_;
};

}  // namespace norvik::detail
