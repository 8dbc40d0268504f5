// fuzz/NSNumberFormatter_fuzzer.cpp - amounts as people type them, read by the formatter of money fields, against a
// slow model of what is an amount; and every amount that was read, written and read again.
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace norvik;

Ref<NSNumberFormatter> british(bool isLenient) {
  auto formatter = make<NSNumberFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setFormat("#,##0.00##");
  formatter->setGeneratesDecimalNumbers(true);
  formatter->setLenient(isLenient);
  return formatter;
}

std::optional<Decimal> readBy(const NSNumberFormatter& formatter, const NSString& text) {
  const std::optional<NSNumber> number = formatter.numberFromString(text);
  return number ? std::optional(number->decimalValue()) : std::nullopt;
}

bool isDigits(std::string_view text) { return text.find_first_not_of("0123456789") == std::string_view::npos; }

std::vector<std::string> pieces(const std::string& text, char separator) {
  std::vector<std::string> result{""};
  for (const char c : text) {
    if (c == separator) {
      result.emplace_back();
    } else {
      result.back() += c;
    }
  }
  return result;
}

/// Takes the text apart at the point and at the commas. ASCII only.
std::optional<Decimal> readByModel(std::string text, bool isLenient) {
  if (isLenient) {
    const char* const spaces = " \t\n\v\f\r";
    text.erase(text.find_last_not_of(spaces) + 1);
    text.erase(0, text.find_first_not_of(spaces));
  }
  const bool isNegative = text.starts_with('-');
  if (isNegative || (isLenient && text.starts_with('+'))) text.erase(0, 1);
  const std::vector<std::string> halves = pieces(text, '.');
  if (halves.size() > 2 || (halves.size() == 2 && !isDigits(halves[1]))) return std::nullopt;
  const std::vector<std::string> groups = pieces(halves[0], ',');
  std::string digits;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (!isDigits(groups[i])) return std::nullopt;
    if (groups.size() > 1 && groups[i].empty()) return std::nullopt;
    if (groups.size() > 1 && !isLenient && (i == 0 ? groups[i].size() > 3 : groups[i].size() != 3)) return std::nullopt;
    digits += groups[i];
  }
  if (digits.empty() && (halves.size() == 1 || halves[1].empty())) return std::nullopt;
  if (halves.size() == 2) digits += "." + halves[1];
  return Decimal::parse((isNegative ? "-" : "") + digits);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Ref<NSNumberFormatter> lenient = british(true), strict = british(false);
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const NSString text = NSString::fromBytes(bytes);
  for (const bool isLenient : {true, false}) {
    const std::optional<Decimal> number = readBy(isLenient ? *lenient : *strict, text);
    if (text.isAscii() && number != readByModel(bytes, isLenient)) std::abort();
    if (!number) continue;
    const NSString written = strict->stringFromNumber(*number);
    const std::optional<Decimal> again = readBy(*strict, written);
    if (!again || strict->stringFromNumber(*again) != written) std::abort();
  }
  return 0;
}
