#include "NorvikCore/platform/foundation/internal/DatePattern.h"

#include "NorvikCore/platform/foundation/internal/DateNames.h"
#include "NorvikCore/platform/values/internal/DigitPairs.h"

#include <algorithm>
#include <cstring>

namespace norvik::detail {
namespace {

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

/// Writes the number with at least `digits` digits. It must be below 10000.
inline char* writeNumber(char* out, std::uint32_t number, std::uint32_t digits) noexcept {
  if (digits == 2 && number < 100) [[likely]] {
    writeDigitPair(out, number);
    return out + 2;
  }
  const std::uint32_t needed = number < 10 ? 1 : number < 100 ? 2 : number < 1000 ? 3 : 4;
  const std::uint32_t count = digits > needed ? digits : needed;
  for (char* digit = out + count; digit != out; number /= 10) *--digit = static_cast<char>('0' + number % 10);
  return out + count;
}

char* writeOffset(char* out, std::int32_t seconds) noexcept {
  *out++ = seconds < 0 ? '-' : '+';
  const auto minutes = static_cast<std::uint32_t>(seconds < 0 ? -seconds : seconds) / 60;
  return writeNumber(writeNumber(out, minutes / 60, 2), minutes % 60, 2);
}

/// The fields that may be pairs. PairNumbers has their numbers in this order, then the century.
constexpr std::string_view pairFields = "yMdHms";

struct PairNumbers {
  PairNumbers(const CivilDate& date, std::uint32_t secondOfDay) noexcept
      : numbers{static_cast<std::uint32_t>(date.year) % 100,
                static_cast<std::uint32_t>(date.month),
                static_cast<std::uint32_t>(date.day),
                secondOfDay / 3600,
                secondOfDay / 60 % 60,
                secondOfDay % 60,
                static_cast<std::uint32_t>(date.year) / 100} {}
  std::uint32_t operator[](std::size_t index) const noexcept { return numbers[index]; }

  std::uint32_t numbers[pairFields.size() + 1];
};

bool isInRange(std::int64_t year) noexcept { return year >= 1 && year <= 9999; }

/// The index, from 0, of the name among the field's names.
std::size_t nameIndex(char field, const CivilDate& date, std::uint32_t hour, std::int64_t day) noexcept {
  switch (field) {
    case 'M':
    case 'L':
      return static_cast<std::size_t>(date.month - 1);
    case 'Q':
    case 'q':
      return static_cast<std::size_t>(date.month - 1) / 3;
    case 'a':
      return hour / 12;
    case 'G':
      return 1;  // years before 1 are not written here
    default:
      return static_cast<std::size_t>(weekday(day) - 1);
  }
}

}  // namespace

std::optional<DatePattern> DatePattern::compile(std::string_view pattern, const DateNames* names) {
  constexpr std::string_view known = "yYMLdDHhKkmsSwQqZ";
  if (pattern.size() > maximalLength) return std::nullopt;
  DatePattern compiled;
  std::size_t longest = 0;
  bool isInText = false;
  const auto appendLiteral = [&](char c) {
    if (!isInText || compiled.items_.back().size == 255)
      compiled.items_.push_back({Kind::Text, 0, 0, static_cast<std::uint16_t>(compiled.literals_.size())});
    ++compiled.items_.back().size;
    compiled.literals_ += c;
    ++longest;
    isInText = true;
  };
  const auto appendName = [&](char field, std::size_t count) {
    const std::vector<std::string>* words = names ? names->of(field, count) : nullptr;
    if (!words) return false;
    compiled.items_.push_back({Kind::Name, field, 0, static_cast<std::uint16_t>(compiled.words_.size())});
    std::size_t longestWord = 0;
    for (const std::string& word : *words) {
      if (word.size() > maximalLength || compiled.literals_.size() > 0x7000) return false;
      compiled.words_.push_back(
          {static_cast<std::uint16_t>(compiled.literals_.size()), static_cast<std::uint16_t>(word.size())});
      compiled.literals_ += word;
      longestWord = std::max(longestWord, word.size());
    }
    longest += longestWord;
    return true;
  };

  bool isQuoted = false, hasMillisecond = false;
  for (std::size_t i = 0; i < pattern.size();) {
    const char c = pattern[i];
    if (c == '\'') {
      if (i + 1 < pattern.size() && pattern[i + 1] == '\'') {
        appendLiteral('\'');
        i += 2;
      } else {
        isQuoted = !isQuoted;
        ++i;
      }
      continue;
    }
    if (isQuoted || !isLetter(c)) {
      appendLiteral(c);
      ++i;
      continue;
    }
    std::size_t count = 1;
    while (i + count < pattern.size() && pattern[i + count] == c) ++count;
    i += count;
    isInText = false;
    if (appendName(c, count)) continue;
    const bool mayBeWords = c == 'M' || c == 'L' || c == 'Q' || c == 'q';
    if (known.find(c) == std::string_view::npos || count > (mayBeWords ? 2 : c == 'Z' ? 3 : 9)) return std::nullopt;
    compiled.items_.push_back({Kind::Number, c, static_cast<std::uint8_t>(count), 0});
    longest += c == 'Z' ? 5 : count < 4 ? 4 : count;
    compiled.needsWeek_ |= c == 'Y' || c == 'w';
    compiled.needsOffset_ |= c == 'Z';
    if (c != 'S') continue;
    if (count != 3 || hasMillisecond) compiled.isSteadyWithinSecond_ = false;
    hasMillisecond = true;
  }
  if (isQuoted || longest > maximalLength) return std::nullopt;
  if (longest < maximalLength) compiled.formPairs();
  return compiled;
}

void DatePattern::formPairs() {
  std::vector<Item> formed;
  for (const Item& item : items_) {
    const std::size_t pair =
        item.kind == Kind::Number && item.size == 2 ? pairFields.find(item.field) : pairFields.npos;
    if (pair != pairFields.npos) {
      formed.push_back({Kind::Pair, 0, 2, static_cast<std::uint16_t>(pair)});
    } else if (item.kind == Kind::Number && item.size == 4 && item.field == 'y') {
      formed.push_back({Kind::Pair, 0, 2, pairFields.size()});
      formed.push_back({Kind::Pair, 0, 2, 0});
    } else if (item.kind == Kind::Text && item.size == 1 && !formed.empty() && formed.back().kind == Kind::Pair &&
               formed.back().size == 2) {
      formed.back().field = literals_[item.start];
      formed.back().size = 3;
    } else {
      formed.push_back(item);
    }
  }
  items_ = std::move(formed);
  hasOnlyPairs_ = std::ranges::all_of(items_, [](const Item& item) { return item.kind == Kind::Pair; });
}

void DatePattern::writeMillisecond(char* text, std::int32_t millisecond) noexcept {
  const auto number = static_cast<std::uint32_t>(millisecond);
  *text = static_cast<char>('0' + number / 100);
  writeDigitPair(text + 1, number % 100);
}

std::size_t DatePattern::write(char (&text)[maximalLength], const Fields& fields,
                               std::size_t* millisecondAt) const noexcept {
  return hasOnlyPairs_ ? writePairs(text, fields) : writeItems(text, fields, millisecondAt);
}

/// Apart from writeItems(), because it needs few registers.
[[gnu::noinline]] std::size_t DatePattern::writePairs(char* text, const Fields& fields) const noexcept {
  const CivilDate date = civilDate(fields.day);
  if (!isInRange(date.year)) return 0;
  const PairNumbers pairs(date, static_cast<std::uint32_t>(fields.secondOfDay));
  char* out = text;
  for (const Item& item : items_) {
    writeDigitPair(out, pairs[item.start]);
    out[2] = item.field;  // without a sign, the next item overwrites it
    out += item.size;
  }
  return static_cast<std::size_t>(out - text);
}

[[gnu::noinline]] std::size_t DatePattern::writeItems(char* text, const Fields& fields,
                                                      std::size_t* millisecondAt) const noexcept {
  const CivilDate date = civilDate(fields.day);
  if (!isInRange(date.year) || (needsOffset_ && fields.offset % 60 != 0)) return 0;
  const auto year = static_cast<std::uint32_t>(date.year);
  const PairNumbers pairs(date, static_cast<std::uint32_t>(fields.secondOfDay));
  const std::uint32_t hour = pairs[3], minute = pairs[4], second = pairs[5];
  CivilWeek week;
  if (needsWeek_) {
    week = weekOfYear(fields.day, fields.firstWeekday, fields.minimumDays);
    if (!isInRange(week.year)) return 0;
  }

  char* out = text;
  for (const Item& item : items_) {
    const std::uint32_t size = item.size;
    if (item.kind == Kind::Pair) [[likely]] {
      writeDigitPair(out, pairs[item.start]);
      out[2] = item.field;  // without a sign, the next item overwrites it
      out += size;
      continue;
    }
    if (item.kind == Kind::Name) {
      const Word& word = words_[item.start + nameIndex(item.field, date, hour, fields.day)];
      std::memcpy(out, literals_.data() + word.start, word.size);
      out += word.size;
      continue;
    }
    if (item.kind == Kind::Text) {
      std::memcpy(out, literals_.data() + item.start, size);
      out += size;
      continue;
    }
    switch (item.field) {
      case 'y':
        out = writeNumber(out, size == 2 ? year % 100 : year, size);
        break;
      case 'Y': {
        const auto weekYear = static_cast<std::uint32_t>(week.year);
        out = writeNumber(out, size == 2 ? weekYear % 100 : weekYear, size);
        break;
      }
      case 'M':
      case 'L':
        out = writeNumber(out, static_cast<std::uint32_t>(date.month), size);
        break;
      case 'Q':
      case 'q':
        out = writeNumber(out, static_cast<std::uint32_t>(date.month + 2) / 3, size);
        break;
      case 'd':
        out = writeNumber(out, static_cast<std::uint32_t>(date.day), size);
        break;
      case 'D':
        out = writeNumber(out, static_cast<std::uint32_t>(dayOfYear(fields.day)), size);
        break;
      case 'H':
        out = writeNumber(out, hour, size);
        break;
      case 'h':
        out = writeNumber(out, hour % 12 == 0 ? 12 : hour % 12, size);
        break;
      case 'K':
        out = writeNumber(out, hour % 12, size);
        break;
      case 'k':
        out = writeNumber(out, hour == 0 ? 24 : hour, size);
        break;
      case 'm':
        out = writeNumber(out, minute, size);
        break;
      case 's':
        out = writeNumber(out, second, size);
        break;
      case 'w':
        out = writeNumber(out, static_cast<std::uint32_t>(week.week), size);
        break;
      case 'S': {
        if (millisecondAt) *millisecondAt = static_cast<std::size_t>(out - text);
        const auto milliseconds = static_cast<std::uint32_t>(fields.millisecond);
        out = writeNumber(out,
                          size == 1   ? milliseconds / 100
                          : size == 2 ? milliseconds / 10
                                      : milliseconds,
                          size < 3 ? size : 3);
        for (std::uint32_t i = 3; i < size; ++i) *out++ = '0';
        break;
      }
      case 'Z':
        out = writeOffset(out, fields.offset);
        break;
    }
  }
  return static_cast<std::size_t>(out - text);
}

}  // namespace norvik::detail
