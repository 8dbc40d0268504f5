// NorvikCore/platform/values/Decimal_literal.h - decimal literals; Decimal.h includes it.
//
//   const Decimal amount = 1'234.50_dec, rate = 2E-1_dec;
//
// The compiler converts a literal exactly. More than 38 digits, an exponent out of range, or anything but a decimal
// number (0x10_dec) does not compile.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

namespace norvik {
namespace detail {

// Called only for a wrong literal: a function that is not constexpr stops the compilation, and its name gives the
// reason.
inline void thisIsNoDecimalLiteral() {}
inline void thisDecimalLiteralHasMoreThan38Digits() {}
inline void thisDecimalLiteralHasAnExponentOutOfRange() {}

consteval Decimal decimalLiteral(const char* text) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  UInt128 mantissa = 0;
  int digits = 0, exponent = 0;
  bool any = false, point = false;
  for (; isDigit(*text) || *text == '\'' || *text == '.'; ++text) {
    if (*text == '\'') continue;
    if (*text == '.') {
      if (point) thisIsNoDecimalLiteral();
      point = true;
      continue;
    }
    any = true;
    mantissa = mantissa * 10 + static_cast<unsigned>(*text - '0');
    if (mantissa != 0 && ++digits > Decimal::maximumDigits) thisDecimalLiteralHasMoreThan38Digits();
    if (point) --exponent;
  }
  if (!any) thisIsNoDecimalLiteral();
  if (*text == 'e' || *text == 'E') {
    const bool negative = *++text == '-';
    if (*text == '-' || *text == '+') ++text;
    if (!isDigit(*text)) thisIsNoDecimalLiteral();
    int written = 0;
    for (; isDigit(*text) || *text == '\''; ++text) {
      if (*text != '\'') written = written * 10 + (*text - '0');
      if (written > 1000) thisDecimalLiteralHasAnExponentOutOfRange();
    }
    exponent += negative ? -written : written;
  }
  if (*text != '\0') thisIsNoDecimalLiteral();
  if (exponent < Decimal::minimumExponent || exponent > Decimal::maximumExponent) {
    thisDecimalLiteralHasAnExponentOutOfRange();
  }
  return DecimalAccess::make(mantissa, exponent, false);
}

}  // namespace detail

inline namespace literals {

[[nodiscard]] consteval Decimal operator""_dec(const char* text) { return detail::decimalLiteral(text); }

}  // namespace literals
}  // namespace norvik
