// fuzz/NSNumberFormatter_fuzzer.cpp - amounts as people type them, in many locales and patterns.
//
// The formatter of British money fields reads the whole input and is compared with a slow model of an amount. The first
// two characters of the input also choose a locale and a pattern, whose formatter reads the rest:
//
// - An accepted number has the digits and the sign of the text.
// - Spaces around the text change nothing.
// - Lenient reading accepts every text that strict reading accepts.
// - The number is written, read and written again, and both written texts are the same. So is the rest itself, if it is
//   a Decimal.
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace norvik;

constexpr std::array locales{"en_GB",
                             "de_DE",
                             "fr_FR",
                             "de_CH",
                             "sv_SE",
                             "he_IL",
                             "en_IN",
                             "ar_EG",
                             "fa_IR",
                             "bn_BD",
                             "hi_IN@numbers=deva",
                             "my_MM",
                             "ne_NP",
                             "mr_IN",
                             "ur_PK",
                             "zh_CN@numbers=hanidec",
                             "es_ES",
                             "en_ZA"};

/// How the number follows from the digits.
enum class Digits { AsTheyAre, Scaled, WithExponent, Words };

struct Form {
  NSNumberFormatterStyle style;
  const char* pattern;  ///< absent for the style's own
  Digits digits;
};

constexpr std::array forms{
    Form{NSNumberFormatterNoStyle, nullptr, Digits::AsTheyAre},
    Form{NSNumberFormatterDecimalStyle, nullptr, Digits::AsTheyAre},
    Form{NSNumberFormatterCurrencyStyle, nullptr, Digits::AsTheyAre},
    Form{NSNumberFormatterPercentStyle, nullptr, Digits::Scaled},
    Form{NSNumberFormatterScientificStyle, nullptr, Digits::WithExponent},
    Form{NSNumberFormatterSpellOutStyle, nullptr, Digits::Words},
    Form{NSNumberFormatterNoStyle, "#,##0.00##", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "0", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "#.##", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "#,##0.00;(#,##0.00)", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "+0.0;-0.0", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "0.00;0.00-", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "\u00A4\u00A4 #,##0.00", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "0.00 'kg'", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "#,##0.25", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "0.03", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "@@@", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "**#,##0.00", Digits::AsTheyAre},
    Form{NSNumberFormatterNoStyle, "0.0\u2030", Digits::Scaled},
    Form{NSNumberFormatterNoStyle, "0.###E0", Digits::WithExponent},
};

struct Formatters {
  Ref<NSNumberFormatter> strict, lenient;
  std::array<std::string, 10> digits;
};

Ref<NSNumberFormatter> formatter(const char* locale, const Form& form, bool isLenient) {
  auto made = make<NSNumberFormatter>();
  made->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  made->setNumberStyle(form.style);
  if (form.pattern) made->setFormat(form.pattern);
  made->setGeneratesDecimalNumbers(true);
  made->setLenient(isLenient);
  return made;
}

const Formatters& formattersFor(std::size_t locale, std::size_t form) {
  static std::array<std::array<std::optional<Formatters>, forms.size()>, locales.size()> made;
  std::optional<Formatters>& result = made[locale][form];
  if (!result) {
    result = {formatter(locales[locale], forms[form], false), formatter(locales[locale], forms[form], true), {}};
    const auto plain = formatter(locales[locale], {NSNumberFormatterNoStyle, "0", Digits::AsTheyAre}, false);
    for (int i = 0; i < 10; ++i) result->digits[static_cast<std::size_t>(i)] = plain->stringFromNumber(i).utf8();
  }
  return *result;
}

[[noreturn]] void fails(const char* what, std::string_view text, std::size_t locale, std::size_t form) {
  const char* const pattern = forms[form].pattern;
  std::fprintf(stderr, "%s: \"%.*s\" in %s, %s %d\n", what, static_cast<int>(text.size()), text.data(), locales[locale],
               pattern ? pattern : "style", static_cast<int>(forms[form].style));
  std::abort();
}

std::optional<Decimal> readBy(const NSNumberFormatter& formatter, const NSString& text) {
  const std::optional<NSNumber> number = formatter.numberFromString(text);
  return number ? std::optional(number->decimalValue()) : std::nullopt;
}

/// The digits of a text in order, without leading zeros.
std::string digitsOf(std::string_view text, const std::array<std::string, 10>& own) {
  std::string digits;
  while (!text.empty()) {
    std::size_t size = 1;
    if (text.front() >= '0' && text.front() <= '9') digits += text.front();
    for (std::size_t i = 0; i < own.size(); ++i) {
      if (own[i].size() > 1 && text.starts_with(own[i])) {
        digits += static_cast<char>('0' + i);
        size = own[i].size();
      }
    }
    text.remove_prefix(size);
  }
  return digits.erase(0, digits.find_first_not_of('0'));
}

std::string withoutZerosAtTheEnd(std::string digits) { return digits.erase(digits.find_last_not_of('0') + 1); }

std::size_t count(std::string_view text, std::string_view part) {
  std::size_t found = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string_view::npos; at += part.size()) ++found;
  return found;
}

void checkRead(const Decimal& number, std::string_view text, const Formatters& formatters, std::size_t locale,
               std::size_t form) {
  if (forms[form].digits == Digits::Words || forms[form].digits == Digits::WithExponent) return;
  const std::size_t minus = count(text, "-") + count(text, "\u2212"), brackets = count(text, "(");
  if (minus + brackets + count(text, "+") > 1) fails("more than one sign", text, locale, form);
  if (number.isNegative() ? minus + brackets != 1 : minus + brackets != 0 && !number.isZero()) {
    fails("another sign", text, locale, form);
  }
  constexpr std::size_t fewPlaces = 100;  // of 128; a percentage takes two
  if (text.size() > fewPlaces) return;
  const std::string digits = withoutZerosAtTheEnd(digitsOf(text, formatters.digits));
  Decimal::Parts parts = number.parts();
  parts.exponent = 0;
  const std::string read = digitsOf(Decimal::fromParts(parts)->stringValue(), formatters.digits);
  if (digits.size() <= static_cast<std::size_t>(Decimal::maximumDigits) && withoutZerosAtTheEnd(read) != digits) {
    fails("other digits", text, locale, form);
  }
}

/// The text of a number reads back as the number that it shows. Zero has no sign.
void checkWritten(const Decimal& number, const Formatters& formatters, std::size_t locale, std::size_t form) {
  const NSString text = formatters.strict->stringFromNumber(number);
  if (number.isNegative() && digitsOf(text.view(), formatters.digits).empty() && forms[form].digits != Digits::Words &&
      text != formatters.strict->stringFromNumber(0)) {
    fails("a sign before zero", text.view(), locale, form);
  }
  // Greater numbers may be rounded to more than 38 digits, and ICU reads words only below 10^15.
  static const Decimal mostDigits = *Decimal::parse("1E30"), mostWords = *Decimal::parse("1E15");
  const Decimal& most = forms[form].digits == Digits::Words ? mostWords : mostDigits;
  if (number >= most || number <= -most) return;
  for (const auto* formatter : {&formatters.strict, &formatters.lenient}) {
    const auto again = readBy(**formatter, text);
    if (!again) fails("does not read back", text.view(), locale, form);
    if ((*formatter)->stringFromNumber(*again) != text) fails("reads back otherwise", text.view(), locale, form);
    if (forms[form].digits == Digits::Words && *again != number) fails("other words", text.view(), locale, form);
  }
}

void checkForm(std::string_view text, std::size_t locale, std::size_t form) {
  const Formatters& formatters = formattersFor(locale, form);
  const NSString typed = NSString::fromBytes(text);
  const auto strictly = readBy(*formatters.strict, typed), leniently = readBy(*formatters.lenient, typed);
  if (strictly && (!leniently || *leniently != *strictly)) fails("strict, not lenient", text, locale, form);
  if (readBy(*formatters.lenient, " " + typed + "\t") != leniently) fails("other with spaces", text, locale, form);
  if (leniently) {
    checkRead(*leniently, typed.view(), formatters, locale, form);
    if (forms[form].digits != Digits::Words) checkWritten(*leniently, formatters, locale, form);
  }
  if (const auto number = Decimal::parse(text); number && !number->isNaN()) {
    // ICU does not read words in every language in which it writes them.
    if (forms[form].digits != Digits::Words || locale == 0) checkWritten(*number, formatters, locale, form);
  }
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

void skipSpaces(std::string& text) { text.erase(0, text.find_first_not_of(" \t\n\v\f\r")); }

/// Splits the text at the point and at the commas. ASCII only.
std::optional<Decimal> readByModel(std::string text, bool isLenient) {
  if (isLenient) {
    text.erase(text.find_last_not_of(" \t\n\v\f\r") + 1);
    skipSpaces(text);
  }
  const bool isNegative = text.starts_with('-');
  if (isNegative || (isLenient && text.starts_with('+'))) {
    text.erase(0, 1);
    if (isLenient) skipSpaces(text);
  }
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

void checkMoney(const std::string& bytes) {
  constexpr std::size_t money = 6;
  static_assert(std::string_view(forms[money].pattern) == "#,##0.00##");
  const Formatters& formatters = formattersFor(0, money);
  const NSString text = NSString::fromBytes(bytes);
  for (const bool isLenient : {true, false}) {
    const std::optional<Decimal> number = readBy(isLenient ? *formatters.lenient : *formatters.strict, text);
    if (text.isAscii() && number != readByModel(bytes, isLenient)) fails("not the model's", bytes, 0, money);
    if (number) checkWritten(*number, formatters, 0, money);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  checkMoney(bytes);
  if (size > 2) checkForm(std::string_view(bytes).substr(2), data[0] % locales.size(), data[1] % forms.size());
  return 0;
}
