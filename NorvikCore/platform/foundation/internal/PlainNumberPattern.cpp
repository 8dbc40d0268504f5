#include "NorvikCore/platform/foundation/internal/PlainNumberPattern.h"

#include "NorvikCore/platform/values/Decimal_charconv.h"

#include <algorithm>
#include <array>

namespace norvik::detail {
namespace {

NSRoundingMode modeFor(PlainNumberPattern::Rounding rounding, bool isNegative) noexcept {
  using enum PlainNumberPattern::Rounding;
  switch (rounding) {
    case Ceiling:
      return NSRoundUp;
    case Floor:
      return NSRoundDown;
    case Down:
      return isNegative ? NSRoundUp : NSRoundDown;
    case Up:
      return isNegative ? NSRoundDown : NSRoundUp;
    case HalfEven:
      return NSRoundBankers;
    case HalfUp:
      return NSRoundPlain;
  }
  return NSRoundBankers;
}

/// White space as a clerk's text may have it around a number: ASCII's, and the no-break spaces of copied tables.
std::string_view withoutSpaceAround(std::string_view text) noexcept {
  constexpr std::array<std::string_view, 9> spaces{" ", "\t", "\n", "\r", "\v", "\f", "\u00A0", "\u2009", "\u202F"};
  const auto cut = [&](auto matches, auto remove) {
    for (bool found = true; found;) {
      found = false;
      for (std::string_view space : spaces) {
        if (matches(space)) {
          remove(space.size());
          found = true;
        }
      }
    }
  };
  cut([&](std::string_view s) { return text.starts_with(s); }, [&](std::size_t n) { text.remove_prefix(n); });
  cut([&](std::string_view s) { return text.ends_with(s); }, [&](std::size_t n) { text.remove_suffix(n); });
  return text;
}

bool take(std::string_view& text, std::string_view prefix) noexcept {
  if (prefix.empty() || !text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

/// The separator; leniently, what a clerk types for one that the keyboard does not have.
bool takeSeparator(std::string_view& text, std::string_view separator, bool isLenient) noexcept {
  if (take(text, separator)) return true;
  if (!isLenient) return false;
  if (separator == "\u2019") return take(text, "'");
  const bool isSpace = separator == "\u00A0" || separator == "\u202F";
  return isSpace && (take(text, " ") || take(text, "\u00A0") || take(text, "\u202F"));
}

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

}  // namespace

void PlainNumberPattern::append(std::string& text, const Decimal& number) const {
  Decimal rounded =
      power == 0 ? number : number.decimalNumberByMultiplyingByPowerOf10(static_cast<std::int16_t>(power));
  if (-rounded.exponent() > maximumFraction) {
    const NSDecimalNumberHandler behavior(
        {.roundingMode = modeFor(rounding, number.isNegative()), .scale = static_cast<std::int16_t>(maximumFraction)});
    rounded = rounded.decimalNumberByRoundingAccordingToBehavior(behavior);
  }
  std::array<char, longestDecimalText> plain;
  const char* const end = to_chars(plain.data(), plain.data() + plain.size(), rounded).ptr;
  std::string_view digits(plain.data(), static_cast<std::size_t>(end - plain.data()));
  if (digits.front() == '-') digits.remove_prefix(1);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  std::string_view whole = digits.substr(0, point);
  std::string_view fraction = point < digits.size() ? digits.substr(point + 1) : std::string_view();

  if (whole == "0") whole = {};
  if (whole.size() > static_cast<std::size_t>(maximumInteger)) {
    whole.remove_prefix(whole.size() - static_cast<std::size_t>(maximumInteger));
    whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
  }
  while (fraction.size() > static_cast<std::size_t>(minimumFraction) && fraction.back() == '0')
    fraction.remove_suffix(1);

  // The sign is the number's own, also where rounding left nothing of it: as ICU has it, -0.001 shows as "-0.00".
  const auto& around = number.isNegative() ? negative : positive;
  text += around.before;
  const auto wholeSize = std::max(static_cast<std::size_t>(minimumInteger), whole.size());
  const bool noDigits = wholeSize == 0 && fraction.empty() && minimumFraction == 0;
  const bool groups = isGrouped && wholeSize >= static_cast<std::size_t>(3 + minimumGrouping);
  const std::size_t zeros = wholeSize - whole.size();
  for (std::size_t i = 0; i < wholeSize; ++i) {
    if (groups && i != 0 && (wholeSize - i) % 3 == 0) text += groupingSeparator;
    text += i < zeros ? '0' : whole[i - zeros];
  }
  if (noDigits) text += '0';
  if (!fraction.empty() || minimumFraction != 0) {
    text += decimalSeparator;
    text += fraction;
    for (std::size_t i = fraction.size(); i < static_cast<std::size_t>(minimumFraction); ++i) text += '0';
  }
  text += around.after;
}

std::optional<Decimal> PlainNumberPattern::readOwn(std::string_view text) const {
  for (const auto* around : {&positive, &negative}) {
    const std::size_t size = around->before.size() + around->after.size();
    if (text.size() <= size || !text.starts_with(around->before) || !text.ends_with(around->after)) continue;
    const std::string_view digits = text.substr(around->before.size(), text.size() - size);
    if (!isDigit(digits.front()) || !isDigit(digits.back())) continue;
    const auto reading = read(digits, false);
    if (!reading || reading->number.exponent() - power < Decimal::minimumExponent) return std::nullopt;
    Decimal number = reading->number;
    for (int i = 0; i < power; ++i) number = number / Decimal(10);  // and so without the zeros at the end, as ICU reads
    for (int i = power; i < 0; ++i) number = number * Decimal(10);
    return around == &negative ? -number : number;
  }
  return std::nullopt;
}

std::optional<PlainNumberPattern::Reading> PlainNumberPattern::read(std::string_view text, bool isLenient) const {
  if (isLenient) text = withoutSpaceAround(text);
  std::string digits;
  if (take(text, minusSign) || (isLenient && (take(text, "-") || take(text, "\u2212")))) {
    digits = "-";
  } else if (isLenient) {
    take(text, "+");
  }

  std::size_t wholeDigits = 0, sinceSeparator = 0, separators = 0;
  bool lastWasDigit = false;
  while (!text.empty()) {
    if (isDigit(text.front())) {
      digits += text.front();
      text.remove_prefix(1);
      ++wholeDigits, ++sinceSeparator;
      lastWasDigit = true;
    } else if (lastWasDigit && takeSeparator(text, groupingSeparator, isLenient)) {
      const bool isFirstGroup = separators == 0;
      if (!isLenient && (!isGrouped || (isFirstGroup ? wholeDigits > 3 : sinceSeparator != 3))) return std::nullopt;
      if (text.empty() || !isDigit(text.front())) return std::nullopt;
      ++separators;
      sinceSeparator = 0;
      lastWasDigit = false;
    } else {
      break;
    }
  }
  if (!isLenient && separators > 0 && sinceSeparator != 3) return std::nullopt;

  Reading reading;
  reading.hasFraction = take(text, decimalSeparator);
  if (reading.hasFraction) {
    digits += '.';
    const std::size_t fractionDigits = static_cast<std::size_t>(std::ranges::find_if_not(text, isDigit) - text.begin());
    if (wholeDigits + fractionDigits == 0) return std::nullopt;
    digits += text.substr(0, fractionDigits);
    text.remove_prefix(fractionDigits);
  }
  if (!text.empty() || (wholeDigits == 0 && !reading.hasFraction)) return std::nullopt;
  const auto number = Decimal::parse(digits);
  if (!number) return std::nullopt;
  reading.number = *number;
  return reading;
}

}  // namespace norvik::detail
