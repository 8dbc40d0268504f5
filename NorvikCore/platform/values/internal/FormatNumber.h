// NorvikCore/platform/values/internal/FormatNumber.h - the number conversions of the format language, which equal those
// of printf in the C locale.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/internal/FormatBuffer.h"

#include <cstdint>

namespace norvik::detail {

/// The flags and fields of one directive, with * replaced by its argument. Width 0 and precision -1 mean "none".
struct FormatField {
  bool leftAlign = false, plusSign = false, spaceSign = false, alternate = false, zeroPad = false;
  int width = 0, precision = -1;
};

/// `bits` is the number, sign-extended if `isNegative`; `bytes` is the size of its type.
void appendInteger(FormatBuffer& out, char conversion, std::uint64_t bits, bool isNegative, unsigned bytes,
                   const FormatField& field);
void appendDecimal(FormatBuffer& out, std::uint64_t bits, bool isNegative);  ///< %d without flags or fields
void appendFixed(FormatBuffer& out, double number);                          ///< %f without flags or fields
void appendAddress(FormatBuffer& out, const void* address, const FormatField& field);
void appendFloating(FormatBuffer& out, char conversion, double number, const FormatField& field);
void appendFloating(FormatBuffer& out, char conversion, long double number, const FormatField& field);
/// %f, rounded as a decimal; not-a-number is "NaN".
void appendDecimalNumber(FormatBuffer& out, const Decimal& number, const FormatField& field);

}  // namespace norvik::detail
