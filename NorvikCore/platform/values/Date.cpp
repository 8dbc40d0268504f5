#include "NorvikCore/platform/values/Date.h"

#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Date_literals.h"

#include <atomic>
#include <charconv>
#include <cmath>
#include <ctime>
#include <ostream>

namespace norvik {
namespace {

std::atomic<Date::CurrentDateSource> currentDateSource{nullptr};

char* writeDigits(char* out, std::int64_t value, int digits) noexcept {
  for (char* digit = out + digits; digit != out; value /= 10) *--digit = static_cast<char>('0' + value % 10);
  return out + digits;
}

/// Writes the text "2021-05-10 00:00:00 +0000" to `out`, which has room for 32 bytes; returns its end.
char* writeDescription(char* out, Date date) noexcept {
  const CivilDateTime fields = civilDateTime(date);
  std::int64_t year = fields.date.year;
  if (year < 0) {
    *out++ = '-';
    year = -year;
  }
  out = year <= 9999 ? writeDigits(out, year, 4) : std::to_chars(out, out + 9, year).ptr;
  *out++ = '-';
  out = writeDigits(out, fields.date.month, 2);
  *out++ = '-';
  out = writeDigits(out, fields.date.day, 2);
  *out++ = ' ';
  out = writeDigits(out, fields.time.hour, 2);
  *out++ = ':';
  out = writeDigits(out, fields.time.minute, 2);
  *out++ = ':';
  out = writeDigits(out, fields.time.second, 2);
  for (const char c : std::string_view(" +0000")) *out++ = c;
  return out;
}

}  // namespace

std::optional<Date> Date::date() {
  const CurrentDateSource source = currentDateSource.load(std::memory_order_acquire);
  return source ? source() : systemDate();
}

Date Date::systemDate() noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);  // cannot fail for this clock
  const auto sinceReference = static_cast<double>(now.tv_sec) - NSTimeIntervalSince1970;
  return fromReferenceSeconds(sinceReference + static_cast<double>(now.tv_nsec) / 1e9);
}

Date::CurrentDateSource Date::setCurrentDateSource(CurrentDateSource source) noexcept {
  return currentDateSource.exchange(source, std::memory_order_acq_rel);
}

std::optional<Date> Date::dateWithString(std::string_view text) noexcept { return detail::DateTextReader(text).read(); }

std::string Date::description() const {
  char text[32];
  return {text, writeDescription(text, *this)};
}

std::ostream& operator<<(std::ostream& out, Date date) {
  char text[32];
  return out << std::string_view(text, static_cast<std::size_t>(writeDescription(text, date) - text));
}

std::size_t Date::hash() const noexcept {
  if (std::isnan(seconds_)) return 0x7FF8;
  return std::hash<double>{}(seconds_);  // gives both zeros the same hash
}

}  // namespace norvik
