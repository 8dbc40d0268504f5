// tests/support/DecimalModel.h - decimal arithmetic as on paper, digit by digit. Decimal numbers are tested against it.
//
// It shares no code and no representation with the library: a number is a string of digits of any length. Results are
// computed exactly, and then rounded once by the digits that are cut off. It is slow, and written so that it is
// obviously right.
#pragma once

#include <string>

namespace model {

/// digits * 10^exponent. There are no leading zeros. Zero has no digits and is never negative.
struct Number {
  std::string digits;
  long exponent = 0;
  bool negative = false;
};

enum class Mode { plain, down, up, bankers };
enum class Outcome { number, overflow, underflow, divideByZero };

/// A number of at most 38 digits, or the reason why there is none. `inexact` is set if the exact result has more
/// digits.
struct Result {
  Outcome outcome = Outcome::number;
  bool inexact = false;
  Number number;
};

inline constexpr long noScale = 32767;

Number add(const Number& a, const Number& b);
Number multiply(const Number& a, const Number& b);
int compare(const Number& a, const Number& b);

/// Rounds an exact number.
Result round(const Number& exact, Mode mode, long scale);
Result divide(const Number& a, const Number& b, Mode mode, long scale);

/// The plain text of a number, and a number from [-]digits[.digits].
std::string print(const Number& number);
Number parse(const std::string& text);

}  // namespace model
