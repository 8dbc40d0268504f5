// NorvikCore/platform/values/Date_literals.h - date literals, which the compiler checks and computes.
//
//   using namespace norvik::literals;
//   Date startOfTaxYear = "2021-04-06"_date;
//   Date cutOff = "2021-04-01 17:30:00 +0100"_date;
//
// The text forms are those of Date::dateWithString. A text that is not a date does not compile.
#pragma once

#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Date.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace norvik {
namespace detail {

/// Reads the text forms of a date from left to right.
class DateTextReader {
 public:
  constexpr explicit DateTextReader(std::string_view text) noexcept : text_(text) {}

  [[nodiscard]] constexpr std::optional<Date> read() noexcept {
    std::int64_t year = 0;
    std::int64_t month = 0, day = 0, hour = 0, minute = 0, second = 0, offset = 0;
    double fraction = 0;
    if (!readYear(year) || !accept('-') || !readTwoDigits(month, 1, 12) || !accept('-')) return std::nullopt;
    if (!readTwoDigits(day, 1, daysInMonth(year, static_cast<std::int32_t>(month)))) return std::nullopt;
    if (!text_.empty()) {
      if (!accept('T') && !accept(' ')) return std::nullopt;
      if (!readTwoDigits(hour, 0, 23) || !accept(':') || !readTwoDigits(minute, 0, 59)) return std::nullopt;
      if (accept(':') && (!readTwoDigits(second, 0, 59) || !readFraction(fraction))) return std::nullopt;
      if (!readOffset(offset)) return std::nullopt;
    }
    const std::int64_t seconds =
        referenceDay(year, static_cast<std::int32_t>(month), static_cast<std::int32_t>(day)) * secondsPerDay +
        hour * 3600 + minute * 60 + second - offset;
    return Date::fromReferenceSeconds(static_cast<double>(seconds) + fraction);
  }

 private:
  constexpr bool accept(char c) noexcept {
    if (text_.empty() || text_.front() != c) return false;
    text_.remove_prefix(1);
    return true;
  }

  [[nodiscard]] constexpr bool startsWithDigit() const noexcept {
    return !text_.empty() && text_.front() >= '0' && text_.front() <= '9';
  }

  constexpr std::int64_t nextDigit() noexcept {
    const char digit = text_.front();
    text_.remove_prefix(1);
    return digit - '0';
  }

  constexpr bool readTwoDigits(std::int64_t& value, std::int64_t low, std::int64_t high) noexcept {
    if (!startsWithDigit()) return false;
    value = nextDigit();
    if (!startsWithDigit()) return false;
    value = value * 10 + nextDigit();
    return value >= low && value <= high;
  }

  /// Four to eight digits with an optional sign: years to 96 million, slightly beyond the range of a date.
  constexpr bool readYear(std::int64_t& year) noexcept {
    const bool isNegative = accept('-');
    if (!isNegative) accept('+');
    int digits = 0;
    for (; startsWithDigit() && digits < 8; ++digits) year = year * 10 + nextDigit();
    if (isNegative) year = -year;
    return digits >= 4 && year >= -96'000'000 && year <= 96'000'000;
  }

  constexpr bool readFraction(double& fraction) noexcept {
    if (!accept('.') && !accept(',')) return true;
    if (!startsWithDigit()) return false;
    double numerator = 0, denominator = 1;
    for (int digits = 0; startsWithDigit(); ++digits) {
      const auto digit = static_cast<double>(nextDigit());
      if (digits >= 15) continue;  // more digits than a double of seconds can hold
      numerator = numerator * 10 + digit;
      denominator *= 10;
    }
    fraction = numerator / denominator;
    return true;
  }

  /// Nothing, "Z", "+01", "+0100" or "+01:00", after an optional space, up to the end of the text.
  constexpr bool readOffset(std::int64_t& seconds) noexcept {
    if (text_.empty()) return true;
    accept(' ');
    if (accept('Z')) return text_.empty();
    const bool isNegative = accept('-');
    if (!isNegative && !accept('+')) return false;
    std::int64_t hours = 0, minutes = 0;
    if (!readTwoDigits(hours, 0, 23)) return false;
    if (!text_.empty()) {
      accept(':');
      if (!readTwoDigits(minutes, 0, 59)) return false;
    }
    seconds = (isNegative ? -1 : 1) * (hours * 3600 + minutes * 60);
    return text_.empty();
  }

  std::string_view text_;
};

/// Called only for a wrong literal: it is not constexpr, so it stops the compilation, and its name gives the reason.
inline void thisTextIsNoDate() {}

}  // namespace detail

inline namespace literals {

consteval Date operator""_date(const char* text, std::size_t length) {
  const std::optional<Date> date = detail::DateTextReader(std::string_view(text, length)).read();
  if (!date) detail::thisTextIsNoDate();
  return *date;
}

}  // namespace literals
}  // namespace norvik
