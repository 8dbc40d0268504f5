#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"

#include "NorvikCore/Categories/internal/AbsentArgument.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"

namespace norvik {
namespace {

constexpr NSDecimalNumberHandler everyFaultRaises(NSRoundingMode mode, std::int16_t scale) noexcept {
  return NSDecimalNumberHandler({.roundingMode = mode,
                                 .scale = scale,
                                 .raiseOnExactness = true,
                                 .raiseOnOverflow = true,
                                 .raiseOnUnderflow = true,
                                 .raiseOnDivideByZero = true});
}

void warnIfAbsent(const std::optional<Decimal>& argument, const char* operation, int line) {
  if (argument) [[likely]]
    return;
  detail::warnOfAbsentArgument("NSDecimalNumber", "Categories/NSDecimalNumber+Norvik", operation, line);
}

NSComparisonResult compared(const Decimal& number, const std::optional<Decimal>& other, const char* operation,
                            int line) {
  warnIfAbsent(other, operation, line);
  return other ? number.compare(*other) : NSOrderedSame;
}

}  // namespace

const Decimal& minusOne() noexcept {
  static constexpr Decimal value = -Decimal(1);
  return value;
}

const NSDecimalNumberHandler& roundDownBehavior() noexcept {
  static constexpr NSDecimalNumberHandler behavior = everyFaultRaises(NSRoundDown, NSDecimalNoScale);
  return behavior;
}

NSDecimalNumberHandler nk_scaleBehavior(std::int64_t) noexcept { return everyFaultRaises(NSRoundPlain, 2); }

Decimal negate(const Decimal& number) { return number.decimalNumberByMultiplyingBy(minusOne()); }

Decimal floor(const Decimal& number) { return number.decimalNumberByRoundingAccordingToBehavior(roundDownBehavior()); }

NSNumber integralNumber(const Decimal& number) { return number.longLongValue(); }

NSString nk_currencyStyleString(const Decimal& number) {
  return NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(number);
}

bool nk_isZero(const Decimal& number) noexcept { return number.compare(Decimal::zero()) == NSOrderedSame; }

bool nk_isLessThan(const Decimal& number, std::optional<Decimal> other) {
  return compared(number, other, "nk_isLessThan:", __LINE__) == NSOrderedAscending;
}

bool nk_isLessThanOrEqualTo(const Decimal& number, std::optional<Decimal> other) {
  return compared(number, other, "nk_isLessThanOrEqualTo:", __LINE__) != NSOrderedDescending;
}

bool nk_isGreaterThan(const Decimal& number, std::optional<Decimal> other) {
  return compared(number, other, "nk_isGreaterThan:", __LINE__) == NSOrderedDescending;
}

bool nk_isGreaterThanOrEqualTo(const Decimal& number, std::optional<Decimal> other) {
  return compared(number, other, "nk_isGreaterThanOrEqualTo:", __LINE__) != NSOrderedAscending;
}

Decimal nk_maximum(const Decimal& number, std::optional<Decimal> other) {
  warnIfAbsent(other, "nk_maximum:", __LINE__);
  return nk_isGreaterThanOrEqualTo(number, other) ? number : *other;
}

}  // namespace norvik
