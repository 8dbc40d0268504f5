#include "NorvikCore/logging/internal/LogTimeStamp.h"

#include <cmath>
#include <cstring>
#include <ctime>

namespace norvik::detail {
namespace {

void writeDigits(char* to, std::size_t count, std::int64_t number) noexcept {
  for (std::size_t i = count; i-- > 0; number /= 10) to[i] = static_cast<char>('0' + number % 10);
}

}  // namespace

void LogTimeStamp::beginMinute(std::int64_t unixMinute) noexcept {
  minute_ = unixMinute;
  const std::time_t seconds = unixMinute * 60;
  std::tm fields{};
  localtime_r(&seconds, &fields);
  std::memcpy(prefix_, "0000/00/00 00:00:", sizeof prefix_);
  writeDigits(prefix_, 4, fields.tm_year + 1900);
  writeDigits(prefix_ + 5, 2, fields.tm_mon + 1);
  writeDigits(prefix_ + 8, 2, fields.tm_mday);
  writeDigits(prefix_ + 11, 2, fields.tm_hour);
  writeDigits(prefix_ + 14, 2, fields.tm_min);
}

void LogTimeStamp::write(Date date, char* to) noexcept {
  const auto milliseconds = static_cast<std::int64_t>(std::floor(date.timeIntervalSince1970() * 1000));
  std::int64_t minute = milliseconds / 60000, rest = milliseconds % 60000;
  if (rest < 0) {
    rest += 60000;
    --minute;
  }
  if (minute != minute_) beginMinute(minute);
  std::memcpy(to, prefix_, sizeof prefix_);
  writeDigits(to + 17, 2, rest / 1000);
  to[19] = ':';
  writeDigits(to + 20, 3, rest % 1000);
}

}  // namespace norvik::detail
