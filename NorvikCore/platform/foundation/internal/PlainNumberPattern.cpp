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
