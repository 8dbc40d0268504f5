#include "TimePhrase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <vector>

#include "Digit.h"
#include "LogLine.h"

namespace norvik_log {
namespace {

constexpr std::int64_t second = 1000, minute = 60 * second, hour = 60 * minute, day = 24 * hour;

std::int64_t startOfDay(std::int64_t wallTime) noexcept {
  const std::int64_t rest = wallTime % day;
  return wallTime - (rest < 0 ? rest + day : rest);
}

std::vector<std::string> wordsOf(std::string_view phrase) {
  std::vector<std::string> words(1);
  for (const char c : phrase) {
    if (c == ' ' || c == '\t') {
      if (!words.back().empty()) words.emplace_back();
    } else {
      words.back() += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

/// Removes exactly `count` digits from the front.
std::optional<int> takeDigits(std::string_view& text, std::size_t count) {
  if (text.size() < count || !std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(count), isDigit)) {
    return std::nullopt;
  }
  int number = 0;
  std::from_chars(text.data(), text.data() + count, number);
  text.remove_prefix(count);
  return number;
}

bool take(std::string_view& text, char wanted) {
  if (text.empty() || text.front() != wanted) return false;
  text.remove_prefix(1);
  return true;
}

/// The wall time of the start of a day that is given as a word or as YYYY-MM-DD.
std::optional<std::int64_t> dayOf(std::string_view word, std::int64_t today) {
  if (word == "today") return today;
  if (word == "yesterday") return today - day;
  constexpr std::array<std::string_view, 7> names = {"thursday", "friday",  "saturday", "sunday",
                                                     "monday",   "tuesday", "wednesday"};  // 1970 began on a Thursday
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (word != names[i] && word != names[i].substr(0, 3)) continue;
    const std::int64_t weekday = ((today / day) % 7 + 7) % 7;
    return today - (weekday - static_cast<std::int64_t>(i) + 7) % 7 * day;
  }
  const auto year = takeDigits(word, 4);
  if (!year || word.empty() || (word.front() != '-' && word.front() != '/')) return std::nullopt;
  const char separator = word.front();
  word.remove_prefix(1);
  const auto month = takeDigits(word, 2);
  if (!month || !take(word, separator)) return std::nullopt;
  const auto date = takeDigits(word, 2);
  if (!date || !word.empty() || *year < 1 || *month < 1 || *month > 12 || *date < 1 ||
      *date > daysInMonth(*year, *month)) {
    return std::nullopt;
  }
  return daysSince1970(*year, *month, *date) * day;
}

struct TimeOfDay {
  std::int64_t milliseconds = 0;
  std::optional<std::int64_t> offset;
};

/// 14:00, 14:00:05, 14:00:05.25 or 14:00:05:250, each optionally followed by z, +01:00 or +0100.
std::optional<TimeOfDay> timeOfDay(std::string_view word) {
  std::string_view digits = word;
  if (word.size() > 1 && word[1] == ':') digits = word;
  const auto hours = takeDigits(digits, word.size() > 1 && word[1] == ':' ? 1 : 2);
  if (!hours || *hours > 23 || !take(digits, ':')) return std::nullopt;
  const auto minutes = takeDigits(digits, 2);
  if (!minutes || *minutes > 59) return std::nullopt;
  TimeOfDay time{*hours * hour + *minutes * minute, std::nullopt};
  if (take(digits, ':')) {
    const auto seconds = takeDigits(digits, 2);
    if (!seconds || *seconds > 59) return std::nullopt;
    time.milliseconds += *seconds * second;
    if (!digits.empty() && (digits.front() == '.' || digits.front() == ',' || digits.front() == ':')) {
      digits.remove_prefix(1);
      if (digits.empty() || !isDigit(digits.front())) return std::nullopt;
      int weight = 100, count = 0;
      for (; !digits.empty() && isDigit(digits.front()) && count < 9; ++count, weight /= 10) {
        time.milliseconds += (digits.front() - '0') * weight;
        digits.remove_prefix(1);
      }
    }
  }
  if (take(digits, 'z')) {
    time.offset = 0;
  } else if (!digits.empty() && (digits.front() == '+' || digits.front() == '-')) {
    const int sign = digits.front() == '-' ? -1 : 1;
    digits.remove_prefix(1);
    const auto offsetHours = takeDigits(digits, 2);
    take(digits, ':');
    const auto offsetMinutes = takeDigits(digits, 2);
    if (!offsetHours || !offsetMinutes || *offsetHours > 23 || *offsetMinutes > 59) return std::nullopt;
    time.offset = sign * (*offsetHours * hour + *offsetMinutes * minute);
  }
  return digits.empty() ? std::optional(time) : std::nullopt;
}

/// "2 hours", "2h" or "90 s": the number, and the unit's length.
struct Span {
  std::int64_t number = 0, unit = 0;
};

std::optional<Span> spanOf(const std::string& text) {
  std::string_view rest = text;
  std::int64_t number = 0;
  const auto [stop, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  if (error != std::errc() || number < 0 || number > 1'000'000'000) return std::nullopt;
  rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()));
  const struct {
    std::initializer_list<std::string_view> names;
    std::int64_t length;
  } units[] = {{{"s", "sec", "secs", "second", "seconds"}, second},
               {{"m", "min", "mins", "minute", "minutes"}, minute},
               {{"h", "hour", "hours"}, hour},
               {{"d", "day", "days"}, day},
               {{"w", "week", "weeks"}, 7 * day}};
  for (const auto& unit : units) {
    if (std::find(unit.names.begin(), unit.names.end(), rest) == unit.names.end()) continue;
    if (number > 400'000 * day / unit.length) return std::nullopt;  // the result would be before the year 1
    return Span{number, unit.length};
  }
  return std::nullopt;
}

std::int64_t chosen(WallClock& clock, std::int64_t wallTime, Pass pass) {
  const WallClock::Instants instants = clock.instants(wallTime);
  return pass == Pass::First ? instants.first : instants.second;
}

std::int64_t ago(const Span& span, WallClock& clock, std::int64_t now, Pass pass) {
  if (span.unit < day) return now - span.number * span.unit;
  return chosen(clock, clock.wallTime(now) - span.number * span.unit, pass);
}

/// Absent if the words are not a time.
std::optional<std::int64_t> instantOfWords(std::vector<std::string> words, WallClock& clock, std::int64_t now,
                                           Pass pass) {
  if (words.size() == 1 && words[0] == "now") return now;
  if ((words.size() == 2 || words.size() == 3) && words.back() == "ago") {
    const auto span = spanOf(words.size() == 2 ? words[0] : words[0] + words[1]);
    return span ? std::optional(ago(*span, clock, now, pass)) : std::nullopt;
  }
  if (words.size() == 1 && isDigit(words[0].front())) {
    if (const std::size_t t = words[0].find('t'); t != std::string::npos) {
      const std::string date = words[0].substr(0, t), time = words[0].substr(t + 1);
      words = {date, time};
    }
  }
  if (words.empty() || words.size() > 3) return std::nullopt;
  const std::int64_t today = startOfDay(clock.wallTime(now));
  const auto first = dayOf(words[0], today);
  if (words.size() == 1 && first) return chosen(clock, *first, pass);
  const std::size_t timeAt = first ? 1 : 0;
  if (timeAt >= words.size()) return std::nullopt;
  std::string typed = words[timeAt];
  for (std::size_t i = timeAt + 1; i < words.size(); ++i) {  // "14:00 +01:00"
    const char c = words[i].empty() ? '\0' : words[i].front();
    if (c != '+' && c != '-' && c != 'z') return std::nullopt;
    typed += words[i];
  }
  const auto time = timeOfDay(typed);
  if (!time) return std::nullopt;
  if (!time->offset) return chosen(clock, first.value_or(today) + time->milliseconds, pass);
  // A day that is not written as a date is the day at that offset.
  const std::int64_t there = startOfDay(now + *time->offset);
  const std::int64_t date = first ? dayOf(words[0], there).value_or(there) : there;
  return date + time->milliseconds - *time->offset;
}

}  // namespace

std::int64_t instantOfPhrase(std::string_view phrase, WallClock clock, std::int64_t now, Pass pass) {
  const std::vector<std::string> words = wordsOf(phrase);
  if (!words.empty()) {
    if (const auto instant = instantOfWords(words, clock, now, pass)) return *instant;
  }
  throw PhraseError("\"" + std::string(phrase) +
                    "\" is not a time; write it as \"14:00\", \"yesterday 14:00\", \"monday\", \"2 hours ago\", "
                    "\"2021-05-10\" or \"2021-05-10 13:30:12.045Z\"");
}

}  // namespace norvik_log
