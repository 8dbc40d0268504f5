// fuzz/PlainNumberPattern_fuzzer.cpp - any number patterns, each with an amount.
//
// - A pattern of digits, with or without separators, writes what a slow model writes.
// - Any pattern writes the same text each time. If strict reading accepts the text, the number that was read is written
//   as the same text, and lenient reading gives the same number.
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/values/NSException.h"
#include "fuzz/PatternFailure.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

using namespace norvik;

namespace {

constexpr const char* locales[] = {"en_GB", "de_DE", "en_IN", "ar_EG"};

struct Amount {
  bool isNegative;
  std::string digits;  ///< before the point, without leading zeros
  std::string places;  ///< after the point
};

/// Plain patterns: the least number of digits before the point, and the least and the greatest number after it.
struct Plain {
  std::size_t whole, least, most;
  bool isGrouped, isPercent;

  [[nodiscard]] std::string pattern() const {
    std::string text = isGrouped ? "#,###" : "#";
    for (std::size_t i = 0; i < whole; ++i) {
      if (isGrouped) {
        text[text.size() - 1 - i - (i > 2 ? 1 : 0)] = '0';
      } else {
        text += '0';
      }
    }
    if (most > 0) text += "." + std::string(least, '0') + std::string(most - least, '#');
    return text + (isPercent ? "%" : "");
  }
};

/// Writes the amount by hand, with half rounded to the even digit.
std::string writtenByModel(Plain plain, Amount amount) {
  if (plain.isPercent) {
    amount.places.resize(std::max<std::size_t>(amount.places.size(), 2), '0');
    amount.digits += amount.places.substr(0, 2);
    amount.places.erase(0, 2);
  }
  if (amount.places.size() > plain.most) {
    const std::string cut = amount.places.substr(plain.most);
    std::string kept = "0" + amount.digits + amount.places.substr(0, plain.most);
    const bool isHalf = cut[0] == '5' && cut.find_first_not_of('0', 1) == std::string::npos;
    if (isHalf ? (kept.back() - '0') % 2 == 1 : cut[0] >= '5') {
      std::size_t at = kept.size() - 1;
      for (; kept[at] == '9'; --at) kept[at] = '0';
      ++kept[at];
    }
    amount.digits = kept.substr(0, kept.size() - plain.most);
    amount.places = kept.substr(kept.size() - plain.most);
  }
  while (amount.digits.starts_with('0')) amount.digits.erase(0, 1);
  while (amount.places.size() > plain.least && amount.places.ends_with('0')) amount.places.pop_back();
  while (amount.places.size() < plain.least) amount.places += '0';
  const bool isZero = (amount.digits + amount.places).find_first_not_of('0') == std::string::npos;
  // A pattern that requires no digit at all requires one before the point.
  const std::size_t whole = plain.whole + plain.least == 0 ? 1 : plain.whole;
  while (amount.digits.size() < whole) amount.digits.insert(0, "0");
  if (plain.isGrouped) {
    for (std::size_t at = amount.digits.size(); at > 3;) amount.digits.insert(at -= 3, ",");
  }
  return (amount.isNegative && !isZero ? "-" : "") + amount.digits +
         (amount.places.empty() ? "" : "." + amount.places) + (plain.isPercent ? "%" : "");
}

/// True if the pattern pads with a digit or a separator, which is read as one. A character beyond ASCII may be either,
/// in some locale.
bool mayPadWithPartsOfNumbers(std::string_view pattern) {
  for (std::size_t at = pattern.find('*'); at != std::string_view::npos; at = pattern.find('*', at + 1)) {
    const char c = at + 1 < pattern.size() ? pattern[at + 1] : '*';
    if ((c >= '0' && c <= '9') || c == '.' || c == ',' || static_cast<unsigned char>(c) >= 0x80) return true;
  }
  return false;
}

/// Empty if the text is not a pattern.
Ref<NSNumberFormatter> formatter(const char* locale, const NSString& pattern, bool isLenient) {
  auto made = make<NSNumberFormatter>();
  made->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  try {
    made->setFormat(pattern);
  } catch (const NSException& e) {
    if (e.name() != NSInvalidArgumentException) throw;
    return nullptr;
  }
  made->setGeneratesDecimalNumbers(true);
  made->setLenient(isLenient);
  return made;
}

}  // namespace

/// The input: a choice, five bytes of a number, one of its places; the rest is the pattern, or two bytes from which a
/// plain pattern is made.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t head = 7;
  if (size < head + 2 || size > head + 60) return 0;
  std::uint64_t mantissa = 0;
  for (std::size_t i = 1; i < 6; ++i) mantissa = mantissa << 8 | data[i];
  const std::size_t places = data[6] % 12;
  std::string digits = std::to_string(mantissa);
  while (digits.size() < places) digits.insert(0, "0");
  Amount amount{(data[0] & 1) != 0, digits.substr(0, digits.size() - places), digits.substr(digits.size() - places)};
  const std::string text =
      (amount.isNegative ? "-" : "") + (amount.digits.empty() ? "0" : amount.digits) + "." + amount.places + "0";
  const Decimal number = Decimal::parse(text).value();

  const bool isPlain = (data[0] & 2) != 0;
  Plain plain{};
  NSString pattern = NSString::fromBytes({reinterpret_cast<const char*>(data) + head, size - head});
  if (isPlain) {
    const std::size_t least = data[head] / 8 % 5;
    plain = {data[head] % 5u, least, least + data[head + 1] % 5, (data[head + 1] & 32) != 0,
             (data[head + 1] & 64) != 0};
    if (plain.isGrouped && plain.whole > 4) plain.whole = 4;
    pattern = plain.pattern();
  }
  const auto fail = [&](const std::string& what, const std::string& written) {
    fuzz::fail(what + " for " + number.stringValue(), pattern.utf8(), written);
  };
  const std::size_t locale = isPlain ? 0 : data[0] / 4 % std::size(locales);
  const auto strict = formatter(locales[locale], pattern, false), lenient = formatter(locales[locale], pattern, true);
  if (!strict || !lenient) {
    if (isPlain || strict || lenient) fail("refused", "");
    return 0;
  }
  const NSString written = strict->stringFromNumber(number);
  if (strict->stringFromNumber(number) != written || lenient->stringFromNumber(number) != written) {
    fail("written otherwise the second time", written.utf8());
  }
  if (isPlain) {
    const std::string expected = writtenByModel(plain, amount);
    if (written != expected) fail("not the model's \"" + expected + "\"", written.utf8());
  }
  const std::optional<NSNumber> read = strict->numberFromString(written);
  if (isPlain && !read) fail("does not read back", written.utf8());
  if (!read) return 0;
  // A quoted point or digit around the numbers of one sign is a number of the other sign.
  if (pattern.view().find('\'') == std::string_view::npos && !mayPadWithPartsOfNumbers(pattern.utf8()) &&
      strict->stringFromNumber(*read) != written) {
    fail("reads back as another number", written.utf8());
  }
  const std::optional<NSNumber> leniently = lenient->numberFromString(written);
  if (!leniently || leniently->decimalValue() != read->decimalValue()) {
    fail("lenient reading differs", written.utf8());
  }
  return 0;
}
