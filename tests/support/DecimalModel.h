// tests/support/DecimalModel.h - decimal arithmetic as on paper, digit by digit: what decimal numbers are tested
// against.
//
// It shares no code and no representation with the library: a number is a string of digits of any length. Results are
// exact, then rounded once by looking at the digits cut off. It is slow, and meant to be obviously right.
#pragma once

#include <string>

namespace model {

/// digits * 10^exponent. No leading zeros; no digits for zero, which is never negative.
struct Number {
  std::string digits;
  long exponent = 0;
  bool negative = false;
};

enum class Mode { plain, down, up, bankers };
enum class Outcome { number, overflow, underflow, divideByZero };

/// A number of at most 38 digits, or why there is none; `inexact` where the exact result needs more.
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

/// The plain text, and a number from [-]digits[.digits].
std::string print(const Number& number);
Number parse(const std::string& text);

}  // namespace model
