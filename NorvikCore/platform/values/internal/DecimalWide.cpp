#include "NorvikCore/platform/values/internal/DecimalWide.h"

namespace norvik::detail {
namespace {

/// {high, low} / {d1, d0}, where the divisor's top bit is set and high is below the divisor: Knuth's algorithm D, one
/// quotient word.
std::uint64_t divideStep(UInt128 high, std::uint64_t low, UInt128 divisor, UInt128& remainder) noexcept {
  const std::uint64_t d1 = high64(divisor), d0 = low64(divisor);
  std::uint64_t quotient, rest;
  bool restFits = true;
  if (high64(high) >= d1) {
    quotient = ~std::uint64_t{0};
    rest = low64(high) + d1;
    restFits = rest >= d1;
  } else {
    quotient = divide128by64(high64(high), low64(high), d1, rest);
  }
  while (restFits && static_cast<UInt128>(quotient) * d0 > join(rest, low)) {
    --quotient;
    rest += d1;
    restFits = rest >= d1;
  }
  remainder = join(low64(high), low) - static_cast<UInt128>(quotient) * d0 -
              (static_cast<UInt128>(low64(static_cast<UInt128>(quotient) * d1)) << 64);
  return quotient;
}

}  // namespace

UInt256 divide(const UInt256& n, UInt128 divisor, UInt128& remainder) noexcept {
  UInt256 quotient;
  if (high64(divisor) == 0) {
    std::uint64_t rest = 0;
    for (int i = 3; i >= 0; --i) {
      quotient.word[i] = divide128by64(rest, n.word[i], low64(divisor), rest);
    }
    remainder = rest;
    return quotient;
  }
  const int shift = std::countl_zero(high64(divisor));
  const UInt128 normal = divisor << shift;
  std::uint64_t w[5] = {n.word[0] << shift, 0, 0, 0, 0};
  for (int i = 1; i < 5; ++i) {
    const std::uint64_t upper = i < 4 ? n.word[i] : 0;
    w[i] = shift == 0 ? upper : upper << shift | n.word[i - 1] >> (64 - shift);
  }
  UInt128 rest = join(w[4], w[3]);
  for (int i = 2; i >= 0; --i) quotient.word[i] = divideStep(rest, w[i], normal, rest);
  remainder = rest >> shift;
  return quotient;
}

UInt128 divide(UInt128 n, UInt128 divisor, UInt128& remainder) noexcept {
  if (high64(divisor) == 0) {
    std::uint64_t rest = 0;
    const std::uint64_t high = divide128by64(0, high64(n), low64(divisor), rest);
    const std::uint64_t low = divide128by64(rest, low64(n), low64(divisor), rest);
    remainder = rest;
    return join(high, low);
  }
  // The quotient is below 2^64 and not more than one above what the divisor's upper half gives it.
  const int shift = std::countl_zero(high64(divisor));
  const UInt128 normal = divisor << shift;
  const UInt128 high = shift == 0 ? UInt128{0} : n >> (128 - shift);
  const UInt128 scaled = n << shift;
  UInt128 rest = 0;
  const std::uint64_t quotient = divideStep(join(low64(high), high64(scaled)), low64(scaled), normal, rest);
  remainder = rest >> shift;
  return quotient;
}

int digitCount(const UInt256& n) noexcept {
  if (n.high() == 0) return digitCount(n.low());
  int bits = 256;
  for (int i = 3; n.word[i] == 0; --i) bits -= 64;
  bits -= std::countl_zero(n.word[bits / 64 - 1]);
  const int digits = bits * 1233 >> 12;  // exact to one for every length up to 256 bits
  return digits + (n >= multiply(powerOfTen(38), powerOfTen(digits - 38)) ? 1 : 0);
}

}  // namespace norvik::detail
