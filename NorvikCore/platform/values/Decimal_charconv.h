// NorvikCore/platform/values/Decimal_charconv.h - decimal numbers from and to characters, in the manner of <charconv>.
//
//   char text[longestDecimalText];
//   auto [end, error] = to_chars(text, text + sizeof text, 1234.5_dec, 2);   // "1234.50"
//
// Nothing is allocated, nothing is thrown, and no locale counts.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <charconv>

namespace norvik {

/// Room enough for every number's plain text.
inline constexpr std::size_t longestDecimalText = 168;

/// Reads [-]digits[.digits][E[+-]digits] or NaN as far as it goes. Where that is no number, or one out of range,
/// `value` stays as it is.
NK_EXPORT std::from_chars_result from_chars(const char* first, const char* last, Decimal& value) noexcept;

/// Writes stringValue().
NK_EXPORT std::to_chars_result to_chars(char* first, char* last, const Decimal& value) noexcept;
/// Writes the number with exactly that many digits after the point, rounded plainly; a negative count is 0.
NK_EXPORT std::to_chars_result to_chars(char* first, char* last, const Decimal& value, int fractionDigits) noexcept;

}  // namespace norvik
