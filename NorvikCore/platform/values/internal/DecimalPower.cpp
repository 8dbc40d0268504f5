#include "NorvikCore/platform/values/internal/DecimalPower.h"

#include <algorithm>

namespace norvik::detail {
namespace {

constexpr int wideDigits = 76;

/// A product of two numbers of 256 bits.
struct UInt512 {
  std::uint64_t word[8] = {};

  UInt512(const UInt256& a, const UInt256& b) noexcept {
    for (int i = 0; i < 4; ++i) {
      std::uint64_t carry = 0;
      for (int k = 0; k < 4; ++k) {
        const UInt128 sum = static_cast<UInt128>(a.word[i]) * b.word[k] + word[i + k] + carry;
        word[i + k] = low64(sum);
        carry = high64(sum);
      }
      word[i + 4] = carry;
    }
  }

  [[nodiscard]] int bits() const noexcept {
    int top = 7;
    while (top > 0 && word[top] == 0) --top;
    return 64 * (top + 1) - std::countl_zero(word[top]);
  }
  std::uint64_t divideBy(const Divisor& divisor) noexcept {
    std::uint64_t remainder = 0;
    for (int i = 7; i >= 0; --i) word[i] = divisor.divide(remainder, word[i], remainder);
    return remainder;
  }
};

Power multiply(const Power& a, const Power& b) noexcept {
  UInt512 product(a.mantissa, b.mantissa);
  int exponent = a.exponent + b.exponent;
  bool exact = a.exact && b.exact;
  for (int over; (over = (product.bits() * 1233 >> 12) - wideDigits) > 0;) {
    const int count = std::min(over, 19);
    if (product.divideBy(tenDivisor(count)) != 0) exact = false;
    exponent += count;
  }
  UInt256 mantissa;
  std::copy(product.word, product.word + 4, mantissa.word);
  return {mantissa, exponent, exact};
}

bool outOfRange(const Power& p) noexcept {
  const int top = digitCount(p.mantissa) + p.exponent;
  return top > 10000 || top < -10000;
}

}  // namespace

Power raiseToPower(UInt128 mantissa, int exponent, std::uint64_t power) noexcept {
  Power base{UInt256(mantissa), exponent, true}, result{UInt256(1), 0, true};
  if (mantissa == 0) return {UInt256(), exponent * static_cast<int>(std::min<std::uint64_t>(power, 128)), true};
  for (;; power /= 2) {
    if (power % 2 != 0) result = multiply(result, base);
    if (power == 1 || outOfRange(result)) return result;
    if (outOfRange(base)) return base;  // it is a factor of the result, and the other factors are on the same side of 1
    base = multiply(base, base);
  }
}

}  // namespace norvik::detail
