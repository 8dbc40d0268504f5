#include "NorvikCore/platform/values/DateFields.h"

#include "NorvikCore/platform/values/CivilDate.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace norvik::detail {
namespace {

constexpr std::string_view monthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                           "July",    "August",   "September", "October", "November", "December"};
constexpr std::string_view weekdayNames[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                             "Friday", "Saturday", "Sunday"};

/// Writes the fields of one date.
class DateFields {
 public:
  DateFields(Date date, std::string& out) noexcept
      : day_(referenceDay(date)),
        fields_(civilDateTime(date)),
        week_(isoWeek(day_)),
        daysSinceMonday_(static_cast<std::size_t>(floorModulo(day_, 7))),
        out_(out) {}

  void write(std::string_view pattern) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
      if (pattern[i] == '%') {
        writeField(pattern[++i]);
      } else {
        out_ += pattern[i];
      }
    }
  }

 private:
  void writeField(char letter) {
    const auto& [date, time] = fields_;
    const std::string_view month = monthNames[date.month - 1], weekday = weekdayNames[daysSinceMonday_];
    constexpr std::size_t shortName = 3;
    switch (letter) {
      case 'Y':
        return number(date.year, 4);
      case 'C':
        return number(floorDivide(date.year, 100), 2);
      case 'y':
        return number(floorModulo(date.year, 100), 2);
      case 'm':
        return number(date.month, 2);
      case 'd':
        return number(date.day, 2);
      case 'e':
        if (date.day < 10) out_ += ' ';
        return number(date.day, 1);
      case 'B':
        out_ += month;
        return;
      case 'b':
      case 'h':
        out_ += month.substr(0, shortName);
        return;
      case 'A':
        out_ += weekday;
        return;
      case 'a':
        out_ += weekday.substr(0, shortName);
        return;
      case 'H':
        return number(time.hour, 2);
      case 'I':
        return number((time.hour + 11) % 12 + 1, 2);
      case 'M':
        return number(time.minute, 2);
      case 'S':
        return number(time.second, 2);
      case 'p':
        out_ += time.hour < 12 ? "AM" : "PM";
        return;
      case 'F':
        return write("%Y-%m-%d");
      case 'D':
        return write("%m/%d/%y");
      case 'T':
        return write("%H:%M:%S");
      case 'R':
        return write("%H:%M");
      case 'G':
        return number(week_.year, 4);
      case 'g':
        return number(floorModulo(week_.year, 100), 2);
      case 'V':
        return number(week_.week, 2);
      case 'j':
        return number(dayOfYear(day_), 3);
      case 'u':
        return number(static_cast<std::int64_t>(daysSinceMonday_) + 1, 1);
      case 'w':
        return number(static_cast<std::int64_t>(daysSinceMonday_ + 1) % 7, 1);
      case 'z':
        out_ += "+0000";
        return;
      case 'Z':
        out_ += "UTC";
        return;
      case 's':
        return number(day_ * secondsPerDay + time.hour * 3600 + time.minute * 60 + time.second +
                          kernel::referenceDateInUnixSeconds,
                      1);
      case 'n':
        out_ += '\n';
        return;
      case 't':
        out_ += '\t';
        return;
      default:
        out_ += '%';
    }
  }

  void number(std::int64_t value, std::size_t digits) {
    const std::string text = std::to_string(value < 0 ? -value : value);
    if (value < 0) out_ += '-';
    if (text.size() < digits) out_.append(digits - text.size(), '0');
    out_ += text;
  }

  std::int64_t day_;
  CivilDateTime fields_;
  CivilWeek week_;
  std::size_t daysSinceMonday_;
  std::string& out_;
};

}  // namespace

std::string dateText(Date date, std::string_view pattern) {
  std::string text;
  DateFields(date, text).write(pattern);
  return text;
}

}  // namespace norvik::detail
