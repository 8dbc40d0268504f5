// NorvikCore/platform/values/Decimal.h - exact decimal numbers, for money, rates and quantities.
//
// A number is a mantissa of up to 38 digits times a power of ten from -128 to 127, or not-a-number. It keeps its
// exponent: 5 and 5.00 are equal, have the same hash, and print as they were written.
//
//   Decimal gross = 2500.00_dec, rate = 0.20_dec;
//   Decimal tax = gross * rate;                  // 500.0000
//   to_string(gross - tax);                      // "2000.0000"
//   *Decimal::parse("1234.50") + 1;              // 1235.50; parse accepts only the whole text
//   (gross / 12).round(2);                       // 208.33
//   abs(-2.50_dec), 7.50_dec % 2;                // 2.50, 1.50
//
// A sum, difference or product is exact if 38 digits can hold it. Its exponent is then the smaller one of the operands;
// for a product it is their sum. The exponent of an exact quotient is the difference of the operands' exponents, or the
// nearest smaller one that can hold the quotient. A result that 38 digits cannot hold is rounded once, to 38 digits, a
// half away from zero. Operators behave as NSDecimalNumberHandler::defaultDecimalNumberHandler() says. They raise
// NSDecimalNumberOverflowException if the exact magnitude is above maximumDecimalNumber(), even if only by 1;
// NSDecimalNumberUnderflowException if it is below 1E-128 and not zero; and NSDecimalNumberDivideByZeroException. If an
// operand is not-a-number, so is the result, and nothing raises.
//
// Literals, comparisons, abs(), + - * and the sign work in constant expressions: static_assert(rate * 2 < 1). A
// constant sum, difference or product must be exact; otherwise it does not compile.
//
// Values of 24 bytes: no allocation, constant time, safe on any thread.
#pragma once  // include time: <string>, <string_view> and <optional> are in its operations

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSComparisonResult.h"
#include "NorvikCore/platform/values/NSDecimalNumberHandler.h"
#include "NorvikCore/platform/values/NSInteger.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace norvik {

namespace detail {
__extension__ typedef unsigned __int128 UInt128;
__extension__ typedef __int128 Int128;
struct DecimalAccess;
struct ADoubleIsNotExact_WriteALiteralLike_1_50_dec;
struct ATextIsReadBy_Decimal_parse;

/// A text that converts to std::string_view explicitly only, such as an NSString.
template <class T>
concept ExplicitText =
    std::is_constructible_v<std::string_view, const T&> && !std::is_convertible_v<const T&, std::string_view> &&
    std::is_class_v<T>;
template <class T>
concept AnyText = std::is_convertible_v<const T&, std::string_view> || ExplicitText<T>;

/// What aligns a mantissa whose exponent is greater by n: 10^n for n from 1 to 18, and 1 for n from -18 to 0.
struct AlignmentFactors {
  constexpr AlignmentFactors() noexcept {
    for (int n = -18; n <= 18; ++n) factors[n + 18] = n <= 0 ? 1 : factors[n + 17] * 10;
  }
  constexpr std::int64_t operator[](int n) const noexcept { return factors[n + 18]; }

  std::int64_t factors[37] = {};
};
// Hidden, because a shared object with a unique symbol stays in memory after dlclose().
[[gnu::visibility("hidden")]] inline constexpr AlignmentFactors alignmentFactors;

/// Not constexpr, so a constant that calls it does not compile and the error names this function.
inline void thisConstantNeedsMoreThan38DigitsOrAnExponentOutOfRange() noexcept {}
}  // namespace detail

class NK_EXPORT Decimal {
 public:
  /// The parts of a number, for code that stores one. The mantissa is mantissaHigh * 2^64 + mantissaLow.
  struct Parts {
    std::uint64_t mantissaHigh = 0, mantissaLow = 0;
    int exponent = 0;
    bool isNegative = false;
    bool isNaN = false;
    friend bool operator==(const Parts&, const Parts&) = default;
  };

  static constexpr int maximumDigits = 38;
  static constexpr int minimumExponent = -128, maximumExponent = 127;

  constexpr Decimal() noexcept = default;

  /// Any integer type, but no character type.
  template <detail::WholeNumber Integer>
  constexpr Decimal(Integer value) noexcept  // NOLINT(google-explicit-constructor): every integer is a decimal
      : low_(value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value)),
        signAndExponent_(value < 0 ? signBit : 0) {}

  /// A whole number below 2^64 converts exactly. Any other number converts to the shortest digits, 17 at most, that
  /// read back as the same double: Decimal(0.1) is 0.1. Infinities and magnitudes out of range become not-a-number; a
  /// magnitude below 1E-128 becomes zero.
  explicit Decimal(double value) noexcept;
  /// The same, with the shortest digits, 9 at most, that read back as the same float.
  explicit Decimal(float value) noexcept;
  explicit Decimal(long double) = delete;
  template <std::same_as<bool> Boolean>  // a template, so that no pointer converts to a boolean implicitly
  explicit constexpr Decimal(Boolean value) noexcept : low_(value ? 1 : 0) {}
  // `Decimal("12.34")` does not compile, and the compiler shows the name of the second parameter's type.
  template <detail::AnyText Text>
  explicit Decimal(const Text&, const detail::ATextIsReadBy_Decimal_parse* = nullptr) = delete;

  [[nodiscard]] static constexpr Decimal zero() noexcept { return Decimal(); }
  [[nodiscard]] static constexpr Decimal one() noexcept { return Decimal(1); }
  [[nodiscard]] static constexpr Decimal notANumber() noexcept { return Decimal(notANumberMark, 0, 0, false); }
  /// (10^38 - 1) * 10^127, and its negative.
  [[nodiscard]] static constexpr Decimal maximumDecimalNumber() noexcept {
    return Decimal(powerOf38High, powerOf38Low - 1, maximumExponent, false);
  }
  [[nodiscard]] static constexpr Decimal minimumDecimalNumber() noexcept {
    return Decimal(powerOf38High, powerOf38Low - 1, maximumExponent, true);
  }

  /// mantissa * 10^exponent, negated if `isNegative`. Out of range raises as arithmetic does.
  [[nodiscard]] static Decimal decimalNumberWithMantissa(std::uint64_t mantissa, std::int16_t exponent,
                                                         bool isNegative);
  /// parse(), or not-a-number if the text is not a number.
  [[nodiscard]] static Decimal decimalNumberWithString(std::string_view text) noexcept;
  template <detail::ExplicitText Text>
  [[nodiscard]] static Decimal decimalNumberWithString(const Text& text) noexcept {
    return decimalNumberWithString(static_cast<std::string_view>(text));
  }
  /// Reads [+-]digits[.digits][E[+-]digits] ("12", "-0.50", ".5", "5.", "1E6") or "NaN". The result is empty unless the
  /// whole text has this form, without spaces and grouping. More than 38 digits are rounded, a half away from zero. The
  /// result is also empty for a magnitude above the greatest, or below 1E-128 except zero.
  [[nodiscard]] static std::optional<Decimal> parse(std::string_view text) noexcept;
  template <detail::ExplicitText Text>
  [[nodiscard]] static std::optional<Decimal> parse(const Text& text) noexcept {
    return parse(static_cast<std::string_view>(text));
  }
  /// Empty if the mantissa has more than 38 digits or the exponent is out of range. A negative zero becomes zero.
  [[nodiscard]] static std::optional<Decimal> fromParts(const Parts& parts) noexcept;

  [[nodiscard]] Parts parts() const noexcept;
  [[nodiscard]] constexpr bool isNaN() const noexcept { return high_ == notANumberMark; }
  [[nodiscard]] constexpr bool isZero() const noexcept { return (low_ | high_) == 0; }
  /// False for zero and for not-a-number.
  [[nodiscard]] constexpr bool isNegative() const noexcept { return (signAndExponent_ & signBit) != 0; }
  /// 0 for not-a-number.
  [[nodiscard]] constexpr int exponent() const noexcept { return static_cast<std::int32_t>(signAndExponent_); }

  [[nodiscard]] Decimal decimalNumberByAdding(const Decimal& other) const { return *this + other; }
  [[nodiscard]] Decimal decimalNumberByAdding(const Decimal& other, const NSDecimalNumberHandler& behavior) const;
  [[nodiscard]] Decimal decimalNumberBySubtracting(const Decimal& other) const { return *this - other; }
  [[nodiscard]] Decimal decimalNumberBySubtracting(const Decimal& other, const NSDecimalNumberHandler& behavior) const;
  [[nodiscard]] Decimal decimalNumberByMultiplyingBy(const Decimal& other) const { return *this * other; }
  [[nodiscard]] Decimal decimalNumberByMultiplyingBy(const Decimal& other,
                                                     const NSDecimalNumberHandler& behavior) const;
  [[nodiscard]] Decimal decimalNumberByDividingBy(const Decimal& other) const { return *this / other; }
  [[nodiscard]] Decimal decimalNumberByDividingBy(const Decimal& other, const NSDecimalNumberHandler& behavior) const;
  /// The power 0 of any number is 1. A product of more than 76 digits is continued with 76 digits, and the result is
  /// rounded. Cost: the logarithm of the power.
  [[nodiscard]] Decimal decimalNumberByRaisingToPower(
      std::uint64_t power,
      const NSDecimalNumberHandler& behavior = NSDecimalNumberHandler::defaultDecimalNumberHandler()) const;
  [[nodiscard]] Decimal decimalNumberByMultiplyingByPowerOf10(
      std::int16_t power,
      const NSDecimalNumberHandler& behavior = NSDecimalNumberHandler::defaultDecimalNumberHandler()) const;
  [[nodiscard]] Decimal decimalNumberByRoundingAccordingToBehavior(const NSDecimalNumberHandler& behavior) const;
  /// Rounded to that many digits after the point; a negative count rounds before it (-3: to thousands). No digits are
  /// added: 1.5 stays 1.5. Raises NSDecimalNumberOverflowException if rounding goes beyond the greatest number.
  [[nodiscard]] Decimal round(int places, NSRoundingMode mode = NSRoundPlain) const;
  [[nodiscard]] constexpr Decimal abs() const noexcept { return Decimal(high_, low_, signAndExponent_ & ~signBit); }

  /// Not-a-number equals itself and is less than every number, so that the order is total.
  [[nodiscard]] NSComparisonResult compare(const Decimal& other) const noexcept {
    return comparisonResult(*this <=> other);
  }

  /// Plain digits: no grouping, no power of ten, as many digits after the point as the exponent says; "NaN". 168
  /// characters at most.
  [[nodiscard]] std::string stringValue() const;
  /// The fraction is discarded. A number out of range becomes the nearest end of the range; not-a-number becomes 0.
  [[nodiscard]] std::int64_t longLongValue() const noexcept;
  [[nodiscard]] std::uint64_t unsignedLongLongValue() const noexcept;
  /// The nearest double; a tie goes to the even one.
  [[nodiscard]] double doubleValue() const noexcept;
  /// True for a number other than zero.
  [[nodiscard]] constexpr bool boolValue() const noexcept { return !isZero() && !isNaN(); }
  /// Depends only on the numeric value; NumberHash.h gives equal integers and doubles the same hash.
  [[nodiscard]] std::size_t hash() const noexcept;

  [[nodiscard]] friend constexpr Decimal operator+(const Decimal& a, const Decimal& b) {
    if (!alike(a, b)) [[unlikely]]
      return std::is_constant_evaluated() ? addConstants(a, b) : addUnlike(a, b);
    const std::int64_t sum = a.smallValue() + b.smallValue(), sign = sum >> 63;
    return Decimal(0, static_cast<std::uint64_t>((sum ^ sign) - sign),
                   static_cast<std::uint32_t>(a.signAndExponent_) | (static_cast<std::uint64_t>(sum) & signBit));
  }
  [[nodiscard]] friend constexpr Decimal operator-(const Decimal& a, const Decimal& b) { return a + (-b); }
  [[nodiscard]] friend constexpr Decimal operator*(const Decimal& a, const Decimal& b) {
    const auto mantissa = static_cast<detail::UInt128>(a.low_) * b.low_;
    const auto high = static_cast<std::uint64_t>(mantissa >> 64), low = static_cast<std::uint64_t>(mantissa);
    const int exponent = a.exponent() + b.exponent();
    const std::uint64_t sign = (a.signAndExponent_ ^ b.signAndExponent_) & signBit;
    if ((a.high_ | b.high_) != 0 || high >= powerOf38High || static_cast<unsigned>(exponent - minimumExponent) > 255u)
        [[unlikely]]
      return std::is_constant_evaluated() ? multiplyConstants(a, b) : multiplyWide(a, b);
    return Decimal(high, low, static_cast<std::uint32_t>(exponent) | ((high | low) != 0 ? sign : 0));
  }
  [[nodiscard]] friend Decimal operator/(const Decimal& a, const Decimal& b) { return divide(a, b); }
  [[nodiscard]] constexpr Decimal operator-() const noexcept {
    return Decimal(high_, low_, signAndExponent_ ^ (boolValue() ? signBit : 0));
  }
  [[nodiscard]] constexpr Decimal operator+() const noexcept { return *this; }
  constexpr Decimal& operator+=(const Decimal& other) { return *this = *this + other; }
  constexpr Decimal& operator-=(const Decimal& other) { return *this = *this - other; }
  constexpr Decimal& operator*=(const Decimal& other) { return *this = *this * other; }
  Decimal& operator/=(const Decimal& other) { return *this = *this / other; }
  /// The exact remainder of `a` after subtracting whole multiples of `b`: less than `b` in magnitude, with the
  /// sign of `a`, as for integers (-7 % 3 is -1). The exponent is the smaller one of the operands. Raises
  /// NSDecimalNumberDivideByZeroException. Cost: proportional to the difference of the exponents, 255 at most.
  [[nodiscard]] friend Decimal operator%(const Decimal& a, const Decimal& b) { return remainder(a, b); }
  Decimal& operator%=(const Decimal& other) { return *this = *this % other; }

  [[nodiscard]] friend constexpr Decimal abs(const Decimal& value) noexcept { return value.abs(); }
  [[nodiscard]] friend Decimal round(const Decimal& value, int places, NSRoundingMode mode = NSRoundPlain) {
    return value.round(places, mode);
  }

  [[nodiscard]] friend constexpr bool operator==(const Decimal& a, const Decimal& b) noexcept {
    if (alike(a, b)) [[likely]]
      return a.smallOrder() == b.smallOrder();
    return compareUnlike(a, b) == 0;
  }
  [[nodiscard]] friend constexpr std::weak_ordering operator<=>(const Decimal& a, const Decimal& b) noexcept {
    if (alike(a, b)) [[likely]]
      return a.smallOrder() <=> b.smallOrder();
    return compareUnlike(a, b);
  }
  // The same order as <=>, without computing its three-way result.
  [[nodiscard]] friend constexpr bool operator<(const Decimal& a, const Decimal& b) noexcept {
    if (alike(a, b)) [[likely]]
      return a.smallOrder() < b.smallOrder();
    return compareUnlike(a, b) < 0;
  }
  [[nodiscard]] friend constexpr bool operator>(const Decimal& a, const Decimal& b) noexcept { return b < a; }
  [[nodiscard]] friend constexpr bool operator<=(const Decimal& a, const Decimal& b) noexcept { return !(b < a); }
  [[nodiscard]] friend constexpr bool operator>=(const Decimal& a, const Decimal& b) noexcept { return !(a < b); }

  // `amount * 0.2` does not compile, and the compiler shows the name of the result type.
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator+(const Decimal&, Real) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator+(Real, const Decimal&) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator-(const Decimal&, Real) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator-(Real, const Decimal&) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator*(const Decimal&, Real) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator*(Real, const Decimal&) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator/(const Decimal&, Real) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator/(Real, const Decimal&) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator%(const Decimal&, Real) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator%(Real, const Decimal&) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator==(const Decimal&, Real) = delete;
  template <std::floating_point Real>
  friend detail::ADoubleIsNotExact_WriteALiteralLike_1_50_dec operator<=>(const Decimal&, Real) = delete;

  /// Writes stringValue(); the stream's width, fill and adjustment apply.
  NK_EXPORT friend std::ostream& operator<<(std::ostream& stream, const Decimal& value);
  /// Reads one word. If the word is not a number, sets failbit and leaves `value` unchanged.
  NK_EXPORT friend std::istream& operator>>(std::istream& stream, Decimal& value);

 private:
  friend struct detail::DecimalAccess;
  friend class DecimalSum;

  static constexpr std::uint64_t signBit = std::uint64_t{1} << 63;
  static constexpr std::uint64_t notANumberMark = ~std::uint64_t{0};  // no mantissa is that large
  static constexpr std::uint64_t powerOf38High = 5421010862427522170u, powerOf38Low = 687399551400673280u;  // 10^38
  static constexpr detail::UInt128 greatestMantissa =
      (static_cast<detail::UInt128>(powerOf38High) << 64 | powerOf38Low) - 1;

  constexpr Decimal(std::uint64_t high, std::uint64_t low, int exponent, bool negative) noexcept
      : Decimal(high, low, static_cast<std::uint32_t>(exponent) | (negative ? signBit : 0)) {}
  constexpr Decimal(std::uint64_t high, std::uint64_t low, std::uint64_t signAndExponent) noexcept
      : low_(low), high_(high), signAndExponent_(signAndExponent) {}

  /// True if both are numbers below 2^62 units of the same power of ten, as most amounts are.
  static constexpr bool alike(const Decimal& a, const Decimal& b) noexcept {
    return (a.high_ | b.high_ | ((a.low_ | b.low_) >> 62) | (a.signAndExponent_ ^ b.signAndExponent_) << 1) == 0;
  }
  [[nodiscard]] constexpr std::int64_t smallValue() const noexcept {
    const auto sign = static_cast<std::int64_t>(signAndExponent_) >> 63;
    return (static_cast<std::int64_t>(low_) ^ sign) - sign;
  }
  /// Has the order of smallValue(), because no zero is negative: a negative value is one less, which saves a step.
  [[nodiscard]] constexpr std::int64_t smallOrder() const noexcept {
    return static_cast<std::int64_t>(low_) ^ static_cast<std::int64_t>(signAndExponent_) >> 63;
  }
  /// Amounts and rates: numbers below 2^42 units whose exponents differ by at most 6 have a sum below 2^63 units.
  static Decimal addUnlike(const Decimal& a, const Decimal& b) {
    constexpr int mostShift = 6;
    const int shift = a.exponent() - b.exponent();
    if ((a.high_ | b.high_ | (a.low_ | b.low_) >> 42) != 0 || static_cast<unsigned>(shift + mostShift) > 2u * mostShift)
        [[unlikely]]
      return addWide(a, b);
    const std::int64_t sum =
        a.smallValue() * detail::alignmentFactors[shift] + b.smallValue() * detail::alignmentFactors[-shift];
    const std::int64_t sign = sum >> 63;
    return Decimal(0, static_cast<std::uint64_t>((sum ^ sign) - sign),
                   static_cast<std::uint32_t>(shift > 0 ? b.exponent() : a.exponent()) |
                       (static_cast<std::uint64_t>(sum) & signBit));
  }
  static Decimal addWide(const Decimal& a, const Decimal& b);
  static Decimal multiplyWide(const Decimal& a, const Decimal& b);
  static Decimal divide(const Decimal& a, const Decimal& b);
  static Decimal remainder(const Decimal& a, const Decimal& b);
  static std::weak_ordering compareWide(const Decimal& a, const Decimal& b) noexcept;
  static constexpr std::weak_ordering compareUnlike(const Decimal& a, const Decimal& b) noexcept {
    return std::is_constant_evaluated() ? compareConstants(a, b) : compareWide(a, b);
  }
  static constexpr std::weak_ordering compareConstants(const Decimal& a, const Decimal& b) noexcept;
  static constexpr Decimal addConstants(const Decimal& a, const Decimal& b) noexcept;
  static constexpr Decimal multiplyConstants(const Decimal& a, const Decimal& b) noexcept;
  static constexpr Decimal exactConstant(detail::UInt128 mantissa, int exponent, bool negative) noexcept;
  [[nodiscard]] constexpr detail::UInt128 mantissa() const noexcept {
    return static_cast<detail::UInt128>(high_) << 64 | low_;
  }

  std::uint64_t low_ = 0, high_ = 0;
  std::uint64_t signAndExponent_ = 0;  // the top bit and the lower half, so that both are one word to load and compare
};

static_assert(sizeof(Decimal) == 24 && alignof(Decimal) == 8);

constexpr std::weak_ordering Decimal::compareConstants(const Decimal& a, const Decimal& b) noexcept {
  if (a.isNaN() || b.isNaN()) return b.isNaN() <=> a.isNaN();
  const int signA = a.isZero() ? 0 : a.isNegative() ? -1 : 1, signB = b.isZero() ? 0 : b.isNegative() ? -1 : 1;
  if (signA != signB || signA == 0) return signA <=> signB;
  if (a.exponent() < b.exponent()) return 0 <=> compareConstants(b, a);
  detail::UInt128 x = a.mantissa();
  const detail::UInt128 y = b.mantissa();
  for (int shift = a.exponent() - b.exponent(); shift > 0; --shift) {
    if (x > greatestMantissa / 10) return signA <=> 0;  // greater than every mantissa
    x *= 10;
  }
  return signA > 0 ? x <=> y : y <=> x;
}

constexpr Decimal Decimal::addConstants(const Decimal& a, const Decimal& b) noexcept {
  if (a.isNaN() || b.isNaN()) return notANumber();
  if (a.exponent() < b.exponent()) return addConstants(b, a);
  detail::UInt128 x = a.mantissa();
  const detail::UInt128 y = b.mantissa();
  for (int shift = a.exponent() - b.exponent(); shift > 0; --shift) {
    if (x > greatestMantissa / 10) detail::thisConstantNeedsMoreThan38DigitsOrAnExponentOutOfRange();
    x *= 10;
  }
  const bool isSum = a.isNegative() == b.isNegative();
  const detail::UInt128 mantissa = isSum ? x + y : x > y ? x - y : y - x;
  return exactConstant(mantissa, b.exponent(), isSum || x > y ? a.isNegative() : b.isNegative());
}

constexpr Decimal Decimal::multiplyConstants(const Decimal& a, const Decimal& b) noexcept {
  if (a.isNaN() || b.isNaN()) return notANumber();
  const detail::UInt128 x = a.mantissa(), y = b.mantissa();
  if (x != 0 && y > greatestMantissa / x) detail::thisConstantNeedsMoreThan38DigitsOrAnExponentOutOfRange();
  return exactConstant(x * y, a.exponent() + b.exponent(), a.isNegative() != b.isNegative());
}

constexpr Decimal Decimal::exactConstant(detail::UInt128 mantissa, int exponent, bool negative) noexcept {
  if (mantissa > greatestMantissa || exponent < minimumExponent || exponent > maximumExponent)
    detail::thisConstantNeedsMoreThan38DigitsOrAnExponentOutOfRange();
  return Decimal(static_cast<std::uint64_t>(mantissa >> 64), static_cast<std::uint64_t>(mantissa), exponent,
                 negative && mantissa != 0);
}

namespace detail {

/// Unchecked construction and access, for the library's own sources.
struct DecimalAccess {
  static constexpr Decimal make(UInt128 mantissa, int exponent, bool negative) noexcept {
    return Decimal(static_cast<std::uint64_t>(mantissa >> 64), static_cast<std::uint64_t>(mantissa), exponent,
                   negative);
  }
  static constexpr std::uint64_t lowMantissa(const Decimal& d) noexcept { return d.low_; }
  static constexpr UInt128 mantissa(const Decimal& d) noexcept { return d.mantissa(); }
};

}  // namespace detail

using NSDecimalNumber = Decimal;

/// stringValue().
[[nodiscard]] inline std::string to_string(const Decimal& value) { return value.stringValue(); }

}  // namespace norvik

template <>
struct std::hash<norvik::Decimal> {
  [[nodiscard]] std::size_t operator()(const norvik::Decimal& value) const noexcept { return value.hash(); }
};

#include "NorvikCore/platform/values/Decimal_limits.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
