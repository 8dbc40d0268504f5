// NorvikCore/platform/values/Decimal_charconv.h - conversion of decimal numbers from and to characters, like
// <charconv>.
//
//   char text[longestDecimalText];
//   auto [end, error] = to_chars(text, text + sizeof text, 1234.5_dec, 2);   // "1234.50"
//
// Nothing is allocated or thrown, and the locale has no effect.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <charconv>

namespace norvik {

/// The length of the longest plain text of a number.
inline constexpr std::size_t longestDecimalText = 168;

/// Reads the longest prefix that is [-]digits[.digits][E[+-]digits] or NaN. If that is not a number, or is out of
/// range, `value` is unchanged.
NK_EXPORT std::from_chars_result from_chars(const char* first, const char* last, Decimal& value) noexcept;

/// Writes stringValue().
NK_EXPORT std::to_chars_result to_chars(char* first, char* last, const Decimal& value) noexcept;
/// Writes the number with exactly that many digits after the point, rounded (a half away from zero); a negative count
/// means 0.
NK_EXPORT std::to_chars_result to_chars(char* first, char* last, const Decimal& value, int fractionDigits) noexcept;

}  // namespace norvik
