// NorvikCore/platform/values/internal/DecimalText.h - conversion of decimal numbers from and to characters, without
// allocation.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

namespace norvik::detail {

enum class ReadOutcome { number, noNumber, outOfRange };

struct ReadResult {
  const char* end;  // the end of the number's text; the start if there is no number
  ReadOutcome outcome;
};

/// Reads the longest prefix that is [-]digits[.digits][E[+-]digits] or NaN; sets `value` if the outcome is a number.
NK_EXPORT_FOR_TESTS ReadResult readDecimal(const char* first, const char* last, Decimal& value) noexcept;

/// Writes the digits of n, "0" for 0, and returns their end. 39 characters at most.
char* writeDigits(char* out, UInt128 n) noexcept;

inline constexpr int longestText = 168;  // a sign, 38 digits, 127 zeros; a sign, "0.", 128 digits

/// Writes the plain text and returns its end.
NK_EXPORT_FOR_TESTS char* writeDecimal(char* out, const Decimal& value) noexcept;

}  // namespace norvik::detail
