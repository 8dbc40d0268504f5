#include "LogLine.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "Digit.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/LogLevel.h"

namespace norvik_log {
namespace {

constexpr std::size_t lineFormTimeSize = 24;  // 2021-05-10T13:30:12.045Z
constexpr std::size_t levelWidth = 7;

constexpr int digit(char byte) noexcept { return byte - '0'; }
constexpr int twoDigits(const char* at) noexcept { return digit(at[0]) * 10 + digit(at[1]); }

/// Parses the offset at `at` and moves `at` past it. Absent if there is none.
std::optional<int> takeOffset(const char*& at, const char* end) noexcept {
  if (at == end) return std::nullopt;
  if (*at == 'Z') {
    ++at;
    return 0;
  }
  if ((*at != '+' && *at != '-') || end - at < 5) return std::nullopt;
  const bool hasColon = at[3] == ':';
  const char* const minutes = at + (hasColon ? 4 : 3);
  if (end - minutes < 2 || !isDigit(at[1]) || !isDigit(at[2]) || !isDigit(minutes[0]) || !isDigit(minutes[1])) {
    return std::nullopt;
  }
  const int hour = twoDigits(at + 1), minute = twoDigits(minutes);
  if (hour > 23 || minute > 59) return std::nullopt;
  const int seconds = hour * 3600 + minute * 60;
  const bool isWest = *at == '-';
  at = minutes + 2;
  return isWest ? -seconds : seconds;
}

constexpr std::array<std::pair<std::string_view, int>, 5> levels = {{{"ERROR", norvik::LOG_FLAG_ERROR},
                                                                     {"WARN", norvik::LOG_FLAG_WARN},
                                                                     {"INFO", norvik::LOG_FLAG_INFO},
                                                                     {"DEBUG", norvik::LOG_FLAG_DEBUG},
                                                                     {"VERBOSE", norvik::LOG_FLAG_VERBOSE}}};

std::optional<int> wholeNumber(std::string_view text) noexcept {
  int number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<int> writtenLevel(std::string_view text) noexcept {
  for (const auto& [name, flag] : levels) {
    if (text == name) return flag;
  }
  return wholeNumber(text);
}

Part partOf(std::string_view whole, std::string_view part) noexcept {
  return {static_cast<std::uint32_t>(part.data() - whole.data()), static_cast<std::uint32_t>(part.size())};
}

/// Parses the parts that DDLogLineFormatter writes after the time. False if the line has another form.
bool takeLineForm(Record& record, std::string_view line) noexcept {
  std::size_t at = lineFormTimeSize + 1;
  if (line.size() < at + levelWidth) return false;
  const std::size_t levelSize = std::min(line.find(' ', at), line.size()) - at;
  const std::optional<int> flag = writtenLevel(line.substr(at, levelSize));
  if (!flag) return false;
  const std::size_t padded = at + std::max(levelSize, levelWidth);
  if (line.substr(at + levelSize, padded - at - levelSize).find_first_not_of(' ') != line.npos) return false;
  if (line.substr(padded, 2) != " [") return false;
  at = padded + 2;
  const std::size_t close = line.find(']', at);
  if (close == line.npos) return false;
  const std::string_view within = line.substr(at, close - at);
  const std::size_t colon = within.rfind(':');
  if (colon == within.npos || colon + 1 == within.size()) return false;
  const std::string_view thread = within.substr(colon + 1);
  if (!std::all_of(thread.begin(), thread.end(), isDigit)) return false;
  if (line.substr(close, 2) != "] ") return false;
  at = close + 2;
  const std::size_t space = line.find(' ', at);
  if (space == line.npos || line.substr(space, 2) != "  ") return false;
  const std::string_view place = line.substr(at, space - at);
  const std::size_t placeColon = place.rfind(':');
  if (placeColon == place.npos) return false;
  const std::optional<int> number = wholeNumber(place.substr(placeColon + 1));
  if (!number) return false;
  record.flag = *flag;
  record.label = partOf(line, within.substr(0, colon));
  record.thread = partOf(line, thread);
  record.file = partOf(line, place.substr(0, placeColon));
  record.line = number;
  record.textBegin = static_cast<std::uint32_t>(space + 2);
  record.isEscaped = true;
  return true;
}

std::optional<unsigned> hexNumber(std::string_view text, std::size_t count) noexcept {
  if (text.size() < count) return std::nullopt;
  unsigned number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + count, number, 16);
  if (error != std::errc() || stop != text.data() + count) return std::nullopt;
  return number;
}

/// `point` is below U+10000. A surrogate half becomes the three bytes of its number.
void appendPoint(std::string& result, unsigned point) {
  if (point < 0x80) {
    result += static_cast<char>(point);
  } else if (point < 0x800) {
    result += static_cast<char>(0xc0 | point >> 6);
    result += static_cast<char>(0x80 | (point & 0x3f));
  } else {
    result += static_cast<char>(0xe0 | point >> 12);
    result += static_cast<char>(0x80 | (point >> 6 & 0x3f));
    result += static_cast<char>(0x80 | (point & 0x3f));
  }
}

/// Removes an escape from the front of `rest`, which begins after the backslash. False if it is no escape.
bool takeEscape(std::string& result, std::string_view& rest) {
  if (rest.empty()) return false;
  const char kind = rest.front();
  rest.remove_prefix(1);
  switch (kind) {
    case '\\':
      result += '\\';
      return true;
    case 'n':
      result += '\n';
      return true;
    case 'r':
      result += '\r';
      return true;
    case 't':
      result += '\t';
      return true;
    case 'x':
      if (const auto byte = hexNumber(rest, 2)) {
        result += static_cast<char>(*byte);
        rest.remove_prefix(2);
        return true;
      }
      return false;
    case 'u':
      if (const auto point = hexNumber(rest, 4)) {
        appendPoint(result, *point);
        rest.remove_prefix(4);
        return true;
      }
      return false;
    default:
      return false;
  }
}

std::string unescapedOrAsItIs(std::string_view text) {
  std::string result;
  if (!appendUnescaped(result, text)) result = text;
  return result;
}

}  // namespace

std::int64_t daysSince1970(std::int64_t year, int month, int day) noexcept {
  // Years begin in March here, so that the leap day is the last day of a year.
  const std::int64_t shifted = month <= 2 ? year - 1 : year;
  const std::int64_t era = (shifted >= 0 ? shifted : shifted - 399) / 400;
  const std::int64_t yearOfEra = shifted - era * 400;
  const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

int daysInMonth(std::int64_t year, int month) noexcept {
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && isLeap ? 29 : days[month - 1];
}

std::optional<HeadTime> headTime(const char* begin, const char* end) noexcept {
  constexpr std::ptrdiff_t shortest = 19;  // 2021-05-10 13:30:12
  if (end - begin < shortest) return std::nullopt;
  const char separator = begin[4];
  if ((separator != '-' && separator != '/') || begin[7] != separator || begin[13] != ':' || begin[16] != ':' ||
      (begin[10] != ' ' && begin[10] != 'T')) {
    return std::nullopt;
  }
  for (const int place : {0, 1, 2, 3, 5, 6, 8, 9, 11, 12, 14, 15, 17, 18}) {
    if (!isDigit(begin[place])) return std::nullopt;
  }
  const int year = twoDigits(begin) * 100 + twoDigits(begin + 2);
  const int month = twoDigits(begin + 5), day = twoDigits(begin + 8);
  const int hour = twoDigits(begin + 11), minute = twoDigits(begin + 14), second = twoDigits(begin + 17);
  if (year < 1 || month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month) || hour > 23 || minute > 59 ||
      second > 59) {
    return std::nullopt;
  }
  HeadTime time;
  time.milliseconds = ((daysSince1970(year, month, day) * 24 + hour) * 60 + minute) * 60'000 + second * 1000;
  const char* at = begin + shortest;
  if (end - at >= 2 && (*at == '.' || *at == ',' || *at == ':') && isDigit(at[1])) {
    ++at;
    const char* const fraction = at;
    int weight = 100;
    for (; at < end && at - fraction < 9 && isDigit(*at); ++at, weight /= 10) time.milliseconds += digit(*at) * weight;
  }
  time.offsetSeconds = takeOffset(at, end);
  if (at < end && *at != ' ' && *at != '\n' && *at != '\t' && *at != '\r') return std::nullopt;
  time.size = static_cast<std::size_t>(at - begin);
  return time;
}

Record recordOf(std::string_view bytes, const HeadTime& time) noexcept {
  Record record;
  record.bytes = bytes;
  const std::string_view line = bytes.substr(0, bytes.find('\n'));
  const bool mayBeLineForm = time.size == lineFormTimeSize && line.size() > lineFormTimeSize && line[4] == '-' &&
                             line[10] == 'T' && line[19] == '.' && line[23] == 'Z' && line[24] == ' ';
  if (mayBeLineForm && takeLineForm(record, line)) return record;
  constexpr std::size_t spaces = 2;
  std::size_t at = time.size;
  while (at < line.size() && at < time.size + spaces && line[at] == ' ') ++at;
  record.textBegin = static_cast<std::uint32_t>(at);
  return record;
}

std::string_view textOf(const Record& record, std::string& held) {
  const std::string_view text = record.bytes.substr(record.textBegin);
  if (!record.isEscaped) return text;
  const std::string_view line = text.substr(0, text.find('\n'));
  if (line.find('\\') == line.npos) return text;
  held.clear();
  // Only escapes that the formatter itself writes are reversed, so that a search can look for the escaped text in the
  // line.
  if (!appendUnescaped(held, line) || norvik::DDLogLineFormatter::escaped(norvik::NSString(held)).str() != line) {
    return text;
  }
  held += text.substr(line.size());
  return held;
}

Names namesOf(const Record& record) {
  if (record.continued) return *record.continued;
  return {unescapedOrAsItIs(record.part(record.label)), std::string(record.part(record.thread)),
          unescapedOrAsItIs(record.part(record.file))};
}

bool appendUnescaped(std::string& result, std::string_view escaped) {
  const std::size_t before = result.size();
  for (;;) {
    const std::size_t plain = std::min(escaped.find('\\'), escaped.size());
    result += escaped.substr(0, plain);
    escaped.remove_prefix(plain);
    if (escaped.empty()) return true;
    escaped.remove_prefix(1);
    if (takeEscape(result, escaped)) continue;
    result.resize(before);
    return false;
  }
}

std::string levelName(int flag) {
  for (const auto& [name, value] : levels) {
    if (flag == value) return std::string(name);
  }
  return flag == 0 ? "" : std::to_string(flag);
}

std::optional<int> levelNamed(std::string_view name) {
  std::string upper(name);
  for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  if (upper == "WARNING") return norvik::LOG_FLAG_WARN;
  const std::optional<int> flag = writtenLevel(upper);
  return flag && *flag > 0 ? flag : std::nullopt;
}

}  // namespace norvik_log
