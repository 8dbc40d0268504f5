// NorvikCore/Categories/NSNumber+Norvik.h - numbers as decimals, in words, and inverted.
//
//   nk_wordString(1234);          // "one thousand two hundred and thirty-four" in a British locale
//   nk_invertBool(true);          // 0
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSNumber.h"

namespace norvik {

/// An integer is converted exactly; a double as by Decimal(double), to the fewest digits that read back as that double,
/// 17 at most.
[[nodiscard]] NK_EXPORT Decimal nk_decimalNumber(const NSNumber& number);

/// The number spelt out in the user's current locale, as on a cheque. The words never give another number. The number
/// is written in digits instead, "1,234,567,890,123,456.78", in these cases:
/// - its magnitude is 10^18 or more, because there are no words for it;
/// - the nearest double does not hold its fraction (a double holds any fraction of a number of up to 15 digits);
/// - it has more than 20 digits after the point.
/// Every call makes a formatter, which takes about half a millisecond; to spell many numbers, keep an NSNumberFormatter
/// in the spell-out style.
[[nodiscard]] NK_EXPORT NSString nk_wordString(const NSNumber& number);

/// The integer 0 for a number that is true, 1 for zero.
[[nodiscard]] NK_EXPORT NSNumber nk_invertBool(const NSNumber& number);

}  // namespace norvik
