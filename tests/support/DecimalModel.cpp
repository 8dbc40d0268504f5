#include "tests/support/DecimalModel.h"

#include <algorithm>

namespace model {
namespace {

constexpr long mostDigits = 38, leastExponent = -128, greatestExponent = 127;

std::string zeros(long count) { return std::string(static_cast<std::size_t>(std::max(0L, count)), '0'); }
long length(const std::string& digits) { return static_cast<long>(digits.size()); }

void trim(std::string& digits) { digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size())); }

/// Compares digit strings without leading zeros.
int compareDigits(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  const int order = a.compare(b);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

std::string addDigits(const std::string& a, const std::string& b) {
  std::string sum = zeros(1 + std::max(length(a), length(b)));
  int carry = 0;
  for (std::size_t i = 1; i <= sum.size(); ++i) {
    const int column =
        carry + (i <= a.size() ? a[a.size() - i] - '0' : 0) + (i <= b.size() ? b[b.size() - i] - '0' : 0);
    sum[sum.size() - i] = static_cast<char>('0' + column % 10);
    carry = column / 10;
  }
  trim(sum);
  return sum;
}

/// a - b in place, where a is not less than b; leading zeros stay.
void subtractDigits(std::string& a, const std::string& b) {
  int borrow = 0;
  for (std::size_t i = 1; i <= a.size() && (i <= b.size() || borrow != 0); ++i) {
    int column = a[a.size() - i] - '0' - borrow - (i <= b.size() ? b[b.size() - i] - '0' : 0);
    borrow = column < 0 ? 1 : 0;
    column += 10 * borrow;
    a[a.size() - i] = static_cast<char>('0' + column);
  }
}

/// True if a kept number is rounded to the next greater magnitude, by the digits that are cut off.
bool goesUp(Mode mode, const std::string& kept, const std::string& cut, bool negative) {
  const bool any = cut.find_first_not_of('0') != std::string::npos;
  const bool isHalf = !cut.empty() && cut[0] == '5' && cut.find_first_not_of('0', 1) == std::string::npos;
  const bool isMore = !cut.empty() && cut[0] >= '5' && !isHalf;
  const bool odd = !kept.empty() && (kept.back() - '0') % 2 != 0;
  switch (mode) {
    case Mode::plain:
      return isHalf || isMore;
    case Mode::down:
      return any && negative;
    case Mode::up:
      return any && !negative;
    case Mode::bankers:
      return isMore || (isHalf && odd);
  }
  return false;
}

bool isAboveTheGreatest(const Number& exact) {
  const long over = length(exact.digits) + exact.exponent - (mostDigits + greatestExponent);
  if (over != 0) return over > 0;
  const std::string nines(static_cast<std::size_t>(mostDigits), '9');
  return exact.digits.compare(0, nines.size(), nines) == 0 &&
         exact.digits.find_first_not_of('0', nines.size()) != std::string::npos;
}

}  // namespace

Number add(const Number& a, const Number& b) {
  const long exponent = std::min(a.exponent, b.exponent);
  std::string x = a.digits.empty() ? "" : a.digits + zeros(a.exponent - exponent);
  std::string y = b.digits.empty() ? "" : b.digits + zeros(b.exponent - exponent);
  if (a.negative == b.negative) return {addDigits(x, y), exponent, a.negative};
  const int order = compareDigits(x, y);
  if (order == 0) return {"", exponent, false};
  std::string& greater = order > 0 ? x : y;
  subtractDigits(greater, order > 0 ? y : x);
  trim(greater);
  return {greater, exponent, order > 0 ? a.negative : b.negative};
}

Number multiply(const Number& a, const Number& b) {
  std::string product = zeros(length(a.digits) + length(b.digits));
  for (std::size_t i = a.digits.size(); i-- > 0;) {
    int carry = 0;
    for (std::size_t k = b.digits.size(); k-- > 0;) {
      const int column = (a.digits[i] - '0') * (b.digits[k] - '0') + (product[i + k + 1] - '0') + carry;
      product[i + k + 1] = static_cast<char>('0' + column % 10);
      carry = column / 10;
    }
    product[i] = static_cast<char>('0' + carry);
  }
  trim(product);
  const bool negative = a.negative != b.negative && !product.empty();
  return {product, a.exponent + b.exponent, negative};
}

int compare(const Number& a, const Number& b) {
  const Number difference = add(a, {b.digits, b.exponent, !b.negative && !b.digits.empty()});
  return difference.digits.empty() ? 0 : difference.negative ? -1 : 1;
}

Result round(const Number& exact, Mode mode, long scale) {
  Result result;
  Number& number = result.number;
  number = exact;
  if (exact.digits.empty()) {
    const long rounded = scale == noScale ? exact.exponent : std::max(exact.exponent, -scale);
    number.exponent = std::clamp(rounded, leastExponent, greatestExponent);
    return result;
  }
  const long digits = length(exact.digits);
  if (digits + exact.exponent <= leastExponent) return {Outcome::underflow, true, {}};
  if (isAboveTheGreatest(exact)) return {Outcome::overflow, false, {}};

  const long forced = std::max({0L, digits - mostDigits, leastExponent - exact.exponent});
  const long asked = scale == noScale ? 0 : std::max(0L, -scale - exact.exponent);
  const auto cutOff = [&](long count) {
    const std::string padded = zeros(count - digits) + exact.digits;
    return padded.substr(padded.size() - static_cast<std::size_t>(count));
  };
  result.inexact = cutOff(forced).find_first_not_of('0') != std::string::npos;
  const long count = std::max(forced, asked);
  number.digits = exact.digits.substr(0, static_cast<std::size_t>(std::max(0L, digits - count)));
  number.exponent = exact.exponent + count;
  if (goesUp(mode, number.digits, cutOff(count), exact.negative)) number.digits = addDigits(number.digits, "1");
  if (length(number.digits) > mostDigits) {
    number.digits.pop_back();
    ++number.exponent;
  }
  if (number.digits.empty()) {
    number.negative = false;
    number.exponent = std::clamp(number.exponent, leastExponent, greatestExponent);
  } else if (number.exponent > greatestExponent) {
    number.digits += zeros(number.exponent - greatestExponent);
    number.exponent = greatestExponent;
    if (length(number.digits) > mostDigits) return {Outcome::overflow, result.inexact, {}};
  }
  return result;
}

Result divide(const Number& a, const Number& b, Mode mode, long scale) {
  if (b.digits.empty()) return {Outcome::divideByZero, false, {}};
  Number quotient{"", a.exponent - b.exponent, a.negative != b.negative && !a.digits.empty()};
  std::string remainder, multiples[10];
  for (int times = 1; times < 10; ++times) multiples[times] = addDigits(multiples[times - 1], b.digits);
  const auto nextDigit = [&](char digit) {
    remainder += digit;
    trim(remainder);
    int times = 9;
    while (compareDigits(remainder, multiples[times]) < 0) --times;
    subtractDigits(remainder, multiples[times]);
    trim(remainder);
    if (!quotient.digits.empty() || times != 0) quotient.digits += static_cast<char>('0' + times);
  };
  for (const char digit : a.digits) nextDigit(digit);
  while (!remainder.empty() && length(quotient.digits) < mostDigits + 2) {
    nextDigit('0');
    --quotient.exponent;
  }
  if (!remainder.empty()) {  // one last digit represents all following ones
    quotient.digits += '1';
    --quotient.exponent;
  }
  return round(quotient, mode, scale);
}

std::string print(const Number& number) {
  std::string text = number.digits.empty() ? "0" : number.digits;
  if (number.exponent > 0 && !number.digits.empty()) text += zeros(number.exponent);
  if (number.exponent < 0) {
    text = zeros(1 - number.exponent - length(text)) + text;
    text.insert(text.size() - static_cast<std::size_t>(-number.exponent), ".");
  }
  return (number.negative ? "-" : "") + text;
}

Number parse(const std::string& text) {
  Number number;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '-') {
      number.negative = true;
    } else if (text[i] == '.') {
      number.exponent = -static_cast<long>(text.size() - i - 1);
    } else {
      number.digits += text[i];
    }
  }
  trim(number.digits);
  if (number.digits.empty()) number.negative = false;
  return number;
}

}  // namespace model
