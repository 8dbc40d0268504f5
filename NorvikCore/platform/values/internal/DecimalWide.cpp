#include "NorvikCore/platform/values/internal/DecimalWide.h"

namespace norvik::detail {
namespace {

/// A divisor of more than 64 bits, and the reciprocal of its upper half.
class WideDivisor {
 public:
  explicit WideDivisor(UInt128 divisor) noexcept
      : shift_(std::countl_zero(high64(divisor))), normal_(divisor << shift_), upper_(high64(normal_)) {}

  [[nodiscard]] UInt256 divide(const UInt256& n, UInt128& remainder) const noexcept {
    UInt256 quotient;
    const std::uint64_t top = shift_ == 0 ? 0 : n.word[3] >> (64 - shift_);
    UInt128 rest = join(top, shiftedWord(n, 3));
    for (int i = 2; i >= 0; --i) quotient.word[i] = step(rest, shiftedWord(n, i));
    remainder = rest >> shift_;
    return quotient;
  }

  [[nodiscard]] UInt128 divide(UInt128 n, UInt128& remainder) const noexcept {
    const std::uint64_t top = shift_ == 0 ? 0 : high64(n) >> (64 - shift_);
    UInt128 rest = join(top, high64(n << shift_));
    const std::uint64_t quotient = step(rest, low64(n << shift_));
    remainder = rest >> shift_;
    return quotient;
  }

 private:
  [[nodiscard]] std::uint64_t shiftedWord(const UInt256& n, int i) const noexcept {
    if (shift_ == 0 || i == 0) return n.word[i] << shift_;
    return n.word[i] << shift_ | n.word[i - 1] >> (64 - shift_);
  }

  /// One word of the quotient of {rest, low}, where `rest` is below the divisor and becomes the remainder. This is
  /// Knuth's algorithm D: an estimate from the upper half, which is at most two too great.
  std::uint64_t step(UInt128& rest, std::uint64_t low) const noexcept {
    const std::uint64_t d1 = high64(normal_), d0 = low64(normal_);
    std::uint64_t quotient, partial;
    bool mayBeTooGreat = true;
    if (high64(rest) >= d1) {
      quotient = ~std::uint64_t{0};
      partial = low64(rest) + d1;
      mayBeTooGreat = partial >= d1;
    } else {
      quotient = upper_.divideShifted(high64(rest), low64(rest), partial);
    }
    while (mayBeTooGreat && wideProduct(quotient, d0) > join(partial, low)) {
      --quotient;
      partial += d1;
      mayBeTooGreat = partial >= d1;
    }
    rest = join(low64(rest), low) - wideProduct(quotient, d0) - join(quotient * d1, 0);
    return quotient;
  }

  int shift_;
  UInt128 normal_;
  Divisor upper_;
};

/// The powers of ten from 10^38 to 10^76.
constexpr auto powersOfTen256 = [] {
  std::array<UInt256, 39> powers{};
  for (std::size_t i = 0; i < powers.size(); ++i) powers[i] = multiply(powersOfTen128[38], powersOfTen128[i]);
  return powers;
}();

UInt256 divideByWord(const UInt256& n, const Divisor& divisor, UInt128& remainder) noexcept {
  UInt256 quotient;
  std::uint64_t rest = 0;
  for (int i = 3; i >= 0; --i) quotient.word[i] = divisor.divide(rest, n.word[i], rest);
  remainder = rest;
  return quotient;
}

UInt128 divideByWord(UInt128 n, const Divisor& divisor, UInt128& remainder) noexcept {
  std::uint64_t rest = 0;
  const std::uint64_t high = high64(n) == 0 ? 0 : divisor.divide(0, high64(n), rest);
  const std::uint64_t low = divisor.divide(rest, low64(n), rest);
  remainder = rest;
  return join(high, low);
}

}  // namespace

UInt256 divide(const UInt256& n, UInt128 divisor, UInt128& remainder) noexcept {
  if (high64(divisor) == 0) return divideByWord(n, Divisor(low64(divisor)), remainder);
  return WideDivisor(divisor).divide(n, remainder);
}

UInt128 divide(UInt128 n, UInt128 divisor, UInt128& remainder) noexcept {
  if (high64(divisor) == 0) return divideByWord(n, Divisor(low64(divisor)), remainder);
  return WideDivisor(divisor).divide(n, remainder);
}

int digitCount(const UInt256& n) noexcept {
  if (n.high() == 0) return digitCount(n.low());
  const int top = n.word[3] != 0 ? 3 : 2;
  const int bits = 64 * (top + 1) - std::countl_zero(n.word[top]);
  const int digits = bits * 1233 >> 12;
  return digits + (n >= powersOfTen256[static_cast<std::size_t>(digits - 38)] ? 1 : 0);
}

}  // namespace norvik::detail
