#include "NorvikCore/platform/foundation/internal/NumberIncrement.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>

namespace norvik::detail {
namespace {

/// The remainder of the division, as a part of the increment.
enum class Rest { None, BelowHalf, Half, AboveHalf };

/// From the remainder, and the digits behind the point of the dividend.
Rest restOf(UInt128 remainder, const std::string& fraction, UInt128 divisor) {
  const bool hasFraction = fraction.find_first_not_of('0') != std::string::npos;
  if (remainder == 0 && !hasFraction) return Rest::None;
  if (2 * remainder > divisor || (2 * remainder == divisor && hasFraction)) return Rest::AboveHalf;
  if (2 * remainder == divisor) return Rest::Half;
  if (2 * remainder + 1 < divisor || !hasFraction) return Rest::BelowHalf;
  if (fraction.front() != '5') return fraction.front() > '5' ? Rest::AboveHalf : Rest::BelowHalf;
  return fraction.find_first_not_of('0', 1) == std::string::npos ? Rest::Half : Rest::AboveHalf;
}

bool roundsAway(Rest rest, bool isNegative, bool isOdd, NSNumberFormatterRoundingMode mode) {
  switch (mode) {
    case NSNumberFormatterRoundCeiling:
      return rest != Rest::None && !isNegative;
    case NSNumberFormatterRoundFloor:
      return rest != Rest::None && isNegative;
    case NSNumberFormatterRoundDown:
      return false;
    case NSNumberFormatterRoundUp:
      return rest != Rest::None;
    case NSNumberFormatterRoundHalfEven:
      return rest == Rest::AboveHalf || (rest == Rest::Half && isOdd);
    case NSNumberFormatterRoundHalfDown:
      return rest == Rest::AboveHalf;
    case NSNumberFormatterRoundHalfUp:
      return rest >= Rest::Half;
  }
  return false;
}

void addOne(std::string& digits) {
  auto digit = digits.rbegin();
  for (; digit != digits.rend() && *digit == '9'; ++digit) *digit = '0';
  if (digit == digits.rend()) {
    digits.insert(0, 1, '1');
  } else {
    ++*digit;
  }
}

std::string product(const std::string& digits, UInt128 factor) {
  std::string result;
  UInt128 carry = 0;  // smaller than the factor
  for (auto digit = digits.rbegin(); digit != digits.rend() || carry != 0;) {
    if (digit != digits.rend()) carry += factor * static_cast<unsigned>(*digit++ - '0');
    result += static_cast<char>('0' + carry % 10);
    carry /= 10;
  }
  std::ranges::reverse(result);
  return result;
}

}  // namespace

NumberDigits NumberDigits::of(const Decimal& number) {
  Decimal::Parts parts = number.parts();
  const int exponent = parts.exponent;
  parts.exponent = 0;
  parts.isNegative = false;
  return {Decimal::fromParts(parts)->stringValue(), exponent, number.isNegative()};
}

NumberDigits NumberDigits::of(double number) {
  char text[32];
  const auto written = std::to_chars(text, std::end(text), std::fabs(number), std::chars_format::scientific);
  const std::string_view all(text, static_cast<std::size_t>(written.ptr - text));
  const std::size_t exponentAt = all.find('e');
  NumberDigits digits;
  digits.isNegative = std::signbit(number);
  digits.text = all.front();
  if (exponentAt > 1) digits.text += all.substr(2, exponentAt - 2);
  const char* const exponent = text + exponentAt + (all[exponentAt + 1] == '+' ? 2 : 1);
  std::from_chars(exponent, written.ptr, digits.exponent);
  digits.exponent -= static_cast<int>(digits.text.size()) - 1;
  return digits;
}

std::string roundedToIncrement(const NumberDigits& number, int power, const Decimal& increment,
                               NSNumberFormatterRoundingMode mode) {
  std::string whole = number.text;
  const UInt128 divisor = DecimalAccess::mantissa(increment);
  const int shift = number.exponent + power - increment.exponent();
  std::string fraction;
  if (shift >= 0) {
    whole.append(static_cast<std::size_t>(shift), '0');
  } else {
    const auto behind = static_cast<std::size_t>(-shift);
    if (whole.size() < behind) whole.insert(0, behind - whole.size(), '0');
    fraction = whole.substr(whole.size() - behind);
    whole.resize(whole.size() - behind);
  }

  std::string quotient = "0";
  UInt128 remainder = 0;
  for (const char digit : whole) {
    remainder = remainder * 10 + static_cast<unsigned>(digit - '0');
    quotient += static_cast<char>('0' + remainder / divisor);
    remainder %= divisor;
  }
  const Rest rest = restOf(remainder, fraction, divisor);
  if (roundsAway(rest, number.isNegative, (quotient.back() - '0') % 2 != 0, mode)) addOne(quotient);
  return (number.isNegative ? "-" : "") + product(quotient, divisor) + "E" +
         std::to_string(increment.exponent() - power);
}

}  // namespace norvik::detail
