// fuzz/DatePattern_fuzzer.cpp - any date patterns, each with a date.
//
// - A pattern of digits, signs and quoted text writes what a slow model writes.
// - A pattern writes the same text each time, appended or not, and the formatter returns the pattern unchanged.
// - If strict reading accepts the text, the date that was read is written as the same text, and lenient reading gives
//   the same date.
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/values/CivilDate.h"
#include "fuzz/PatternFailure.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

using namespace norvik;
using fuzz::fail;

namespace {

constexpr const char* locales[] = {"en_GB", "de_DE", "ar_EG", "ja_JP"};

std::string padded(std::int64_t number, std::size_t digits) {
  std::string text = std::to_string(number);
  while (text.size() < digits) text.insert(0, "0");
  return text;
}

/// Returns nothing if the pattern has another field, or a quotation without an end.
std::optional<std::string> writtenByModel(std::string_view pattern, std::int64_t second, int millisecond) {
  const CivilDateTime at = civilDateTime(Date::fromReferenceSeconds(static_cast<double>(second)));
  const std::int64_t firstDay = referenceDay(at.date.year, 1, 1);
  const std::int64_t day = referenceDay(at.date.year, at.date.month, at.date.day);
  std::string text;
  bool isQuoted = false;
  for (std::size_t i = 0; i < pattern.size();) {
    const char c = pattern[i];
    if (c == '\'') {
      const bool isDouble = i + 1 < pattern.size() && pattern[i + 1] == '\'';
      if (isDouble) {
        text += c;
      } else {
        isQuoted = !isQuoted;
      }
      i += isDouble ? 2 : 1;
      continue;
    }
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (isQuoted || !isLetter) {
      text += c;
      ++i;
      continue;
    }
    const std::size_t start = i;
    while (i < pattern.size() && pattern[i] == c) ++i;
    const std::size_t count = i - start;
    if (count > 9) return std::nullopt;
    const int hour = at.time.hour;
    switch (c) {
      case 'y':
        text += count == 2 ? padded(at.date.year % 100, 2) : padded(at.date.year, count);
        break;
      case 'M':
        if (count > 2) return std::nullopt;
        text += padded(at.date.month, count);
        break;
      case 'd':
        text += padded(at.date.day, count);
        break;
      case 'D':
        text += padded(day - firstDay + 1, count);
        break;
      case 'H':
        text += padded(hour, count);
        break;
      case 'k':
        text += padded(hour == 0 ? 24 : hour, count);
        break;
      case 'h':
        text += padded(hour % 12 == 0 ? 12 : hour % 12, count);
        break;
      case 'K':
        text += padded(hour % 12, count);
        break;
      case 'm':
        text += padded(at.time.minute, count);
        break;
      case 's':
        text += padded(at.time.second, count);
        break;
      case 'S': {
        std::string digits = padded(millisecond, 3);
        digits.resize(count, '0');
        text += digits;
        break;
      }
      default:
        return std::nullopt;
    }
  }
  return isQuoted ? std::nullopt : std::optional(text);
}

/// The pattern, with a space for each character of quoted text.
std::string withoutQuotedText(std::string_view pattern) {
  std::string fields;
  bool isQuoted = false;
  for (const char c : pattern) {
    if (c == '\'') isQuoted = !isQuoted;
    fields += isQuoted || c == '\'' ? ' ' : c;
  }
  return fields;
}

/// True if a text in the pattern stands for one date only, as far as the pattern shows it. Weekdays and weeks without a
/// full date are read as a date of their own, and of several fractions of a second the last counts.
bool tellsTheDate(std::string_view pattern) {
  const std::string fields = withoutQuotedText(pattern);
  const auto has = [&](std::string_view letters) { return fields.find_first_of(letters) != std::string::npos; };
  int fractions = 0;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const bool isFraction = fields[i] == 'S' || fields[i] == 'A';
    if (isFraction && (i == 0 || fields[i - 1] != fields[i])) ++fractions;
  }
  if (fractions > 1) return false;
  return (has("yu") && has("ML") && has("d")) || !has("EecwWFgQqDYrUGBbazZXxvVOAj");
}

Ref<NSDateFormatter> formatter(const char* locale, const NSString& pattern, bool isLenient) {
  auto made = make<NSDateFormatter>();
  made->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  made->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  made->setDateFormat(pattern);
  made->setLenient(isLenient);
  return made;
}

}  // namespace

/// The input: a locale, five bytes of seconds, two of milliseconds; the rest is the pattern.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t head = 8;
  if (size < head || size > head + 60) return 0;
  std::uint64_t number = 0;
  for (std::size_t i = 1; i < 6; ++i) number = number << 8 | data[i];
  constexpr std::int64_t lastDay = referenceDay(9999, 12, 31), firstDay = referenceDay(1, 1, 1);
  constexpr std::uint64_t seconds = static_cast<std::uint64_t>(lastDay - firstDay) * 86400;
  const std::int64_t second = firstDay * 86400 + static_cast<std::int64_t>(number % seconds);
  const int millisecond = (data[6] << 8 | data[7]) % 1000;
  const Date date = Date::fromReferenceSeconds(static_cast<double>(second) + millisecond / 1000.0);

  const char* const locale = locales[data[0] % std::size(locales)];
  const std::string_view bytes(reinterpret_cast<const char*>(data) + head, size - head);
  const NSString pattern = NSString::fromBytes(bytes);
  const auto strict = formatter(locale, pattern, false), lenient = formatter(locale, pattern, true);
  if (strict->dateFormat() != pattern) fail("the pattern is not kept", bytes, strict->dateFormat().utf8());
  const NSString text = strict->stringFromDate(date);
  if (lenient->stringFromDate(date) != text) fail("lenient writing differs", bytes, text.utf8());
  std::string appended = "> ";
  strict->appendStringFromDate(date, appended);
  if (appended != "> " + text.utf8()) fail("appended otherwise", bytes, appended);
  if (data[0] % std::size(locales) == 0 && pattern.isWellFormed()) {
    const auto expected = writtenByModel(bytes, second, millisecond);
    if (expected && text != NSString::fromBytes(*expected)) {
      fail("not the model's \"" + *expected + "\"", bytes, text.utf8());
    }
  }
  const std::optional<Date> read = strict->dateFromString(text);
  if (!read || civilDate(*read).year > 9999) return 0;
  if (tellsTheDate(bytes) && strict->stringFromDate(*read) != text)
    fail("reads back as another date", bytes, text.utf8());
  if (lenient->dateFromString(text) != read) fail("lenient reading differs", bytes, text.utf8());
  return 0;
}
