#include "NorvikCore/platform/foundation/internal/PlainNumberPattern.h"

#include "NorvikCore/platform/values/Decimal_charconv.h"
#include "NorvikCore/platform/values/internal/DecimalDivisor.h"
#include "NorvikCore/platform/values/internal/DigitPairs.h"

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

/// Writes the last `count` digits of the number before p and removes them from the number.
char* writeDigitsBefore(char* p, std::uint64_t& number, int count) noexcept {
  for (; count >= 2; count -= 2) {
    p -= 2;
    writeDigitPair(p, number % 100);
    number /= 100;
  }
  if (count == 1) {
    *--p = static_cast<char>('0' + number % 10);
    number /= 10;
  }
  return p;
}

/// The texts of most patterns have one to three characters, for which a call of memcpy costs more than this loop.
char* writeTextBefore(char* p, std::string_view text) noexcept {
  for (std::size_t i = text.size(); i-- > 0;) *--p = text[i];
  return p;
}

}  // namespace

bool PlainNumberPattern::isShort() const noexcept {
  return maximumInteger >= mostShortDigits && minimumInteger <= mostShortDigits && minimumFraction <= mostShortDigits &&
         groupingSeparator.size() <= 4 && decimalSeparator.size() <= 4 &&
         std::max(positive.before.size() + positive.after.size(), negative.before.size() + negative.after.size()) <=
             mostShortText;
}

std::string_view PlainNumberPattern::shortText(ShortText& room, const Decimal& number) const noexcept {
  constexpr std::uint64_t beyond = 1'000'000'000'000'000'000;  // 10^18
  int places = -(number.exponent() + power);
  const UInt128 mantissa = DecimalAccess::mantissa(number);
  if (mantissa >= beyond || places < 0 || places > std::min(maximumFraction, mostShortDigits)) return {};
  auto digits = static_cast<std::uint64_t>(mantissa);
  for (; places > minimumFraction && digits % 10 == 0; --places) digits /= 10;

  const auto& around = number.isNegative() && digits != 0 ? negative : positive;
  char* const end = room.data() + room.size();
  char* p = writeTextBefore(end, around.after);
  if (places > 0 || minimumFraction > 0) {
    for (int i = places; i < minimumFraction; ++i) *--p = '0';
    p = writeDigitsBefore(p, digits, places);
    p = writeTextBefore(p, decimalSeparator);
  } else if (digits == 0 && minimumInteger == 0) {
    *--p = '0';
  }
  int left = std::max(minimumInteger, digitCount(digits));
  if (isGrouped && left >= 3 + minimumGrouping) {
    for (; left > 3; left -= 3) {
      p = writeDigitsBefore(p, digits, 3);
      p = writeTextBefore(p, groupingSeparator);
    }
  }
  p = writeDigitsBefore(p, digits, left);
  p = writeTextBefore(p, around.before);
  return {p, static_cast<std::size_t>(end - p)};
}

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

  const auto showsZero = [&] { return whole.empty() && fraction.find_first_not_of('0') == std::string_view::npos; };
  const auto& around = number.isNegative() && !showsZero() ? negative : positive;
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

}  // namespace norvik::detail
