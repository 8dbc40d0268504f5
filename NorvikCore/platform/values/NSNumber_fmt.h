// NorvikCore/platform/values/NSNumber_fmt.h - numbers of any kind in {fmt} format strings. The user must have {fmt}.
//
//   fmt::format("{}", NSNumber(37.5));            // "37.5": stringValue()
//   fmt::format("{:,.2f}", NSNumber(1234));       // "1,234.00": every format of a Decimal
//
// A double is formatted as its shortest digits, so 0.125 with two places is 0.13. Infinity, not-a-number and magnitudes
// beyond those of Decimal show as stringValue(), whatever the precision.
#pragma once  // include time: <fmt/format.h> is the purpose of this header

#include "NorvikCore/platform/values/Decimal_fmt.h"
#include "NorvikCore/platform/values/NSNumber.h"

template <>
struct fmt::formatter<norvik::NSNumber> : fmt::formatter<norvik::Decimal> {
  template <class Context>
  auto format(const norvik::NSNumber& number, Context& context) const {
    const norvik::Decimal decimal = number.decimalValue();
    if (number.kind() == norvik::NSNumber::Kind::Double) {
      if (decimal.isNaN()) return writeWord(number.stringValue().view(), context);
      if (showsAllDigits()) return writeDigits(number.stringValue().view(), context);
    }
    return fmt::formatter<norvik::Decimal>::format(decimal, context);
  }
};
