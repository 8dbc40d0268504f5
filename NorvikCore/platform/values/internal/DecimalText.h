// NorvikCore/platform/values/internal/DecimalText.h - decimal numbers from and to characters, without allocation.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

namespace norvik::detail {

enum class ReadOutcome { number, noNumber, outOfRange };

struct ReadResult {
  const char* end;  // where the number's text ends; the start where there is none
  ReadOutcome outcome;
};

/// Reads [-]digits[.digits][E[+-]digits] or NaN as far as it goes, and sets `value` where the outcome is a number.
NK_EXPORT ReadResult readDecimal(const char* first, const char* last, Decimal& value) noexcept;

/// Writes the digits of n, and gives their end; "0" for 0. 39 characters at most.
char* writeDigits(char* out, UInt128 n) noexcept;

inline constexpr int longestText = 168;  // a sign, 38 digits, 127 zeros; a sign, "0.", 128 digits

/// Writes the plain text, and gives its end.
NK_EXPORT char* writeDecimal(char* out, const Decimal& value) noexcept;

}  // namespace norvik::detail
