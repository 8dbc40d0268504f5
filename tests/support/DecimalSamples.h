// tests/support/DecimalSamples.h - random decimal numbers for tests: amounts, wide numbers, edges, and their models.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"
#include "tests/support/DecimalModel.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>

namespace norvik::test {

/// A number in both representations. Both are created from the same parts, not one from the other.
struct Sample {
  norvik::Decimal decimal;
  model::Number number;
};

/// Creates numbers from a seed: the same sequence on every run.
class DecimalSamples {
 public:
  explicit DecimalSamples(std::uint64_t seed) : random_(seed) {}

  /// A number from 0 to limit - 1.
  int below(int limit) { return static_cast<int>(random_() % static_cast<std::uint64_t>(limit)); }

  /// A third of the numbers are amounts. The others have up to 38 digits and any exponent, and are often near a power
  /// of ten.
  Sample next() {
    const int kind = below(6);
    if (kind < 2) return make(randomDigits(1 + below(9)), -below(5), below(4) == 0);
    if (kind == 2) return make(randomDigits(1 + below(20)), 10 - below(30), coin());
    if (kind == 3) return make(randomDigits(1 + below(38)), 20 - below(60), coin());
    if (kind == 4) return make(edgeDigits(), 5 - below(20), coin());
    return make(coin() ? edgeDigits() : randomDigits(1 + below(38)), edgeExponent(), coin());
  }

  bool coin() { return below(2) == 0; }

  static Sample make(const std::string& digits, int exponent, bool negative) {
    norvik::detail::UInt128 mantissa = 0;
    for (const char digit : digits) mantissa = mantissa * 10 + static_cast<unsigned>(digit - '0');
    const norvik::Decimal::Parts parts{static_cast<std::uint64_t>(mantissa >> 64), static_cast<std::uint64_t>(mantissa),
                                       exponent, negative, false};
    std::string trimmed = digits;
    trimmed.erase(0, std::min(trimmed.find_first_not_of('0'), trimmed.size()));
    return {*norvik::Decimal::fromParts(parts), {trimmed, exponent, negative && !trimmed.empty()}};
  }

 private:
  std::string randomDigits(int count) {
    std::string digits;
    for (int i = 0; i < count; ++i) digits += static_cast<char>('0' + below(10));
    return digits;
  }
  /// 0, 1, 5, powers of ten, their neighbours and halves, runs of nines, and the limits of 64 bits.
  std::string edgeDigits() {
    const auto zeros = std::string(static_cast<std::size_t>(below(37)), '0');
    switch (below(7)) {
      case 0:
        return "1" + zeros;
      case 1:
        return "5" + zeros;
      case 2:
        return std::string(zeros.size() + 1, '9');
      case 3:
        return zeros.empty() ? "0" : "1" + zeros.substr(1) + "1";
      case 4:
        return zeros.empty() ? "15" : "4" + std::string(zeros.size(), '9');
      case 5:
        return coin() ? "18446744073709551615" : "18446744073709551616";
      default:
        return randomDigits(1 + below(3)) + zeros.substr(0, 35);
    }
  }
  int edgeExponent() {
    switch (below(4)) {
      case 0:
        return -128 + below(12);
      case 1:
        return 127 - below(12);
      case 2:
        return -64 + below(8);
      default:
        return below(256) - 128;
    }
  }

  std::mt19937_64 random_;
};

}  // namespace norvik::test
