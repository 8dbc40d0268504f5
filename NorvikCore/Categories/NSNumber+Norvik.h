// NorvikCore/Categories/NSNumber+Norvik.h - numbers as decimals, in words, and inverted.
//
//   nk_wordString(1234);          // "one thousand two hundred and thirty-four" in a British locale
//   nk_invertBool(true);          // 0
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSNumber.h"

namespace norvik {

/// Integers exactly; a double as Decimal(double): the fewest digits that read back as that double, 17 at most.
[[nodiscard]] NK_EXPORT Decimal nk_decimalNumber(const NSNumber& number);

/// The number spelt out in the user's current locale, as on a cheque, and never as another number. There are no words
/// for 10^18 and beyond, nor for a fraction that the nearest double does not hold (any of 15 digits it does) or that
/// has more than 20 digits behind the point: such numbers are written in digits, "1,234,567,890,123,456.78". Every call
/// makes a formatter, about half a millisecond; to spell many, keep an NSNumberFormatter in the spell-out style.
[[nodiscard]] NK_EXPORT NSString nk_wordString(const NSNumber& number);

/// The integer 0 for a number that is true, 1 for zero.
[[nodiscard]] NK_EXPORT NSNumber nk_invertBool(const NSNumber& number);

}  // namespace norvik
