#include "NorvikCore/platform/values/Decimal.h"

#include "NorvikCore/platform/values/internal/DecimalAlignment.h"
#include "NorvikCore/platform/values/internal/DecimalRounding.h"
#include "NorvikCore/platform/values/internal/DecimalText.h"
#include "NorvikCore/platform/values/internal/NumberMixing.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace norvik {
namespace {

using detail::DecimalAccess;
using detail::UInt128;

template <class Floating>
Decimal fromFloating(Floating value) noexcept {
  if (!std::isfinite(value)) return Decimal::notANumber();
  const Floating magnitude = std::fabs(value);
  if (magnitude < Floating{18446744073709551616.0} && std::trunc(magnitude) == magnitude) {
    const auto whole = static_cast<std::uint64_t>(magnitude);
    return DecimalAccess::make(whole, 0, value < 0 && whole != 0);
  }
  char text[48];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
  Decimal result;
  if (detail::readDecimal(text, end, result).outcome == detail::ReadOutcome::number) return result;
  return magnitude < 1 ? Decimal::zero() : Decimal::notANumber();
}

/// The magnitude without its fraction; the greatest 128-bit number if the magnitude is too great for 64 bits.
UInt128 wholePart(const Decimal& value) noexcept {
  const UInt128 mantissa = DecimalAccess::mantissa(value);
  const int exponent = value.exponent();
  if (value.isNaN() || mantissa == 0 || exponent < -38) return 0;
  if (exponent < 0) {
    UInt128 remainder;
    return detail::divideByPowerOfTen(mantissa, -exponent, remainder);
  }
  if (detail::digitCount(mantissa) + exponent > 20) return ~UInt128{0};
  return mantissa * detail::powerOfTen(exponent);
}

}  // namespace

const NSDecimalNumberHandler& NSDecimalNumberHandler::defaultDecimalNumberHandler() noexcept {
  static constexpr NSDecimalNumberHandler handler(Settings{});
  return handler;
}

Decimal::Decimal(double value) noexcept : Decimal(fromFloating(value)) {}
Decimal::Decimal(float value) noexcept : Decimal(fromFloating(value)) {}

Decimal Decimal::decimalNumberWithMantissa(std::uint64_t mantissa, std::int16_t exponent, bool isNegative) {
  return detail::settle(mantissa, detail::Tail::none, exponent, isNegative,
                        NSDecimalNumberHandler::defaultDecimalNumberHandler());
}

std::optional<Decimal> Decimal::fromParts(const Parts& parts) noexcept {
  if (parts.isNaN) return notANumber();
  const UInt128 mantissa = detail::join(parts.mantissaHigh, parts.mantissaLow);
  if (mantissa >= detail::firstBeyondMantissa || parts.exponent < minimumExponent || parts.exponent > maximumExponent) {
    return std::nullopt;
  }
  return DecimalAccess::make(mantissa, parts.exponent, parts.isNegative && mantissa != 0);
}

Decimal::Parts Decimal::parts() const noexcept {
  if (isNaN()) return {.isNaN = true};
  return {high_, low_, exponent(), isNegative(), false};
}

std::int64_t Decimal::longLongValue() const noexcept {
  const UInt128 whole = wholePart(*this);
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  if (isNegative()) return whole > static_cast<UInt128>(most) ? -most - 1 : -static_cast<std::int64_t>(whole);
  return whole > static_cast<UInt128>(most) ? most : static_cast<std::int64_t>(whole);
}

std::uint64_t Decimal::unsignedLongLongValue() const noexcept {
  if (isNegative()) return 0;
  const UInt128 whole = wholePart(*this);
  return detail::high64(whole) != 0 ? ~std::uint64_t{0} : detail::low64(whole);
}

double Decimal::doubleValue() const noexcept {
  if (isNaN()) return std::numeric_limits<double>::quiet_NaN();
  // If doubles hold the mantissa and the power of ten exactly, one correctly rounded operation is sufficient.
  static constexpr double exactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                           1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  if (high_ == 0 && low_ <= std::uint64_t{1} << 53 && exponent() >= -22 && exponent() <= 22) {
    const double magnitude = static_cast<double>(low_);
    const double value = exponent() < 0 ? magnitude / exactPowers[-exponent()] : magnitude * exactPowers[exponent()];
    return isNegative() ? -value : value;
  }
  char text[48];
  char* end = detail::writeDigits(text, DecimalAccess::mantissa(*this));
  *end++ = 'e';
  end = std::to_chars(end, text + sizeof text, exponent()).ptr;
  double value = 0;
  std::from_chars(text, end, value);
  return isNegative() ? -value : value;
}

std::size_t Decimal::hash() const noexcept {
  if (isNaN()) return 0x9e3779b97f4a7c15u;
  UInt128 mantissa = DecimalAccess::mantissa(*this);
  int exponent = this->exponent();
  while (detail::high64(mantissa) != 0) {
    UInt128 remainder;
    const UInt128 shorter = detail::divideByPowerOfTen(mantissa, 1, remainder);
    if (remainder != 0)
      return detail::mixNumber(detail::high64(mantissa), detail::low64(mantissa), exponent, isNegative());
    mantissa = shorter;
    ++exponent;
  }
  return detail::hashNumber(detail::low64(mantissa), exponent, isNegative());
}

std::weak_ordering Decimal::compareWide(const Decimal& a, const Decimal& b) noexcept {
  const int shift = a.exponent() - b.exponent();
  if (detail::alignable(a, b)) [[likely]] {
    return detail::alignedMantissa(a, shift) <=> detail::alignedMantissa(b, -shift);
  }
  if (a.isNaN() || b.isNaN()) return b.isNaN() <=> a.isNaN();
  const int signA = a.isZero() ? 0 : a.isNegative() ? -1 : 1, signB = b.isZero() ? 0 : b.isNegative() ? -1 : 1;
  if (signA != signB || signA == 0) return signA <=> signB;
  UInt128 x = DecimalAccess::mantissa(a), y = DecimalAccess::mantissa(b);
  const int xTop = detail::digitCount(x) + a.exponent(), yTop = detail::digitCount(y) + b.exponent();
  std::weak_ordering order = xTop <=> yTop;
  if (order == 0) {
    // Both have the same number of digits before the point, so the one with the greater exponent has fewer digits and
    // can be scaled without overflow.
    if (a.exponent() > b.exponent()) x *= detail::powerOfTen(a.exponent() - b.exponent());
    if (b.exponent() > a.exponent()) y *= detail::powerOfTen(b.exponent() - a.exponent());
    order = x <=> y;
  }
  return a.isNegative() ? 0 <=> order : order;
}

}  // namespace norvik
