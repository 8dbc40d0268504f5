#include "NorvikCore/platform/values/NumberOrder.h"

#include "NorvikCore/platform/values/NSNumber.h"
#include "tests/support/Doubles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace norvik {
namespace {

using norvik::test::infinity;
using norvik::test::notANumber;

TEST(NumberOrder, HeaderExample) {
  EXPECT_TRUE(numberEqual(5, 5.00_dec) && numberEqual(0.1, 0.1_dec));
  EXPECT_TRUE(numberCompare(9007199254740993, 9007199254740992.0) > 0);
}

TEST(NumberOrder, EveryNumberOfThisListIsLessThanAllAfterIt) {
  const std::vector<std::vector<NSNumber>> ascending = {
      {notANumber, Decimal::notANumber()},
      {-infinity},
      {-1e308},
      {Decimal::minimumDecimalNumber()},
      {-1e20, *Decimal::parse("-1E20")},
      {-0x1p63, std::numeric_limits<std::int64_t>::min()},
      {-9223372036854775807LL},
      {-1.5, -1.50_dec},
      {-1, -1.0, -1_dec},
      {-1e-127, *Decimal::parse("-1E-127")},
      {-1e-300},
      {0, 0.0, -0.0, false, 0.00_dec},
      {5e-324},
      {1e-300},
      {*Decimal::parse("1E-128"), 1e-128},
      {1.4e-128},
      {1.5e-128},
      {*Decimal::parse("2E-128"), 2e-128},
      {0.1, 0.1_dec},
      {*Decimal::parse("0.1000000000000000055511151231257827021")},
      {1, true, 1.0, 1u, 1.000_dec},
      {9007199254740992LL, 9007199254740992.0},
      {9007199254740993LL, 9007199254740993_dec},
      {9007199254740994LL, 9007199254740994.0},
      {std::numeric_limits<std::int64_t>::max()},
      {0x1p63, 9223372036854775808ULL, 9223372036854775808_dec},
      {std::numeric_limits<std::uint64_t>::max()},
      {*Decimal::parse("18446744073709551616")},
      {0x1p64, *Decimal::parse("18446744073709552000")},
      {1e22, *Decimal::parse("1E22")},
      {Decimal::maximumDecimalNumber()},
      {1e166},
      {infinity},
  };
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      for (const NSNumber& a : ascending[i]) {
        for (const NSNumber& b : ascending[j]) {
          EXPECT_EQ(a <=> b, i <=> j) << a << ' ' << b;
          if (i == j) {
            EXPECT_EQ(a.hash(), b.hash()) << a << ' ' << b;
          }
        }
      }
    }
  }
}

/// The digits of a number, read from its text: slow, and independent of the library's arithmetic.
struct Digits {
  bool isNegative = false;
  std::string digits;  // without zeros at either end
  int point = 0;       // the value is 0.digits times 10 to the power of this

  explicit Digits(const std::string& text) {
    std::size_t i = 0;
    isNegative = text[i] == '-';
    i += isNegative ? 1 : 0;
    bool seenPoint = false;
    for (; i < text.size() && text[i] != 'e'; ++i) {
      if (text[i] == '.') {
        seenPoint = true;
        continue;
      }
      digits += text[i];
      point += seenPoint ? 0 : 1;
    }
    if (i < text.size()) point += std::stoi(text.substr(i + 1));
    const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
    digits.erase(0, zeros);
    point -= static_cast<int>(zeros);
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    if (digits.empty()) {
      isNegative = false;
      point = 0;
    }
  }

  [[nodiscard]] int compare(const Digits& other) const {
    if (isNegative != other.isNegative) return isNegative ? -1 : 1;
    if (digits.empty() || other.digits.empty()) {
      const int sign = isNegative ? -1 : 1;
      return digits.empty() ? (other.digits.empty() ? 0 : -sign) : sign;
    }
    int magnitude = point - other.point;
    if (magnitude == 0) magnitude = digits.compare(other.digits);
    magnitude = magnitude < 0 ? -1 : magnitude > 0 ? 1 : 0;
    return isNegative ? -magnitude : magnitude;
  }
};

std::string digitsOf(const NSNumber& number) {
  if (number.kind() == NSNumber::Kind::Decimal) return number.decimalValue().stringValue();
  if (number.kind() == NSNumber::Kind::Unsigned) return std::to_string(number.unsignedLongLongValue());
  if (number.kind() != NSNumber::Kind::Double) return std::to_string(number.longLongValue());
  char text[64];
  const double value = number.doubleValue();
  if (std::fabs(value) < 0x1p64 && std::trunc(value) == value) {
    std::snprintf(text, sizeof text, "%.0f", value);
    return text;
  }
  return std::string(text, std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr);
}

/// Numbers that are close together: they differ in the kind, the last digit or the last bit.
NSNumber randomNumber(std::mt19937_64& random) {
  static const double scales[] = {1,    0.01,   1e-3,   1e15,  9007199254740992.0, 0x1p63, 0x1p64,
                                  1e22, 1e-120, 1e-128, 1e-140};
  const double scale = scales[random() % std::size(scales)];
  const double real = static_cast<double>(static_cast<std::int64_t>(random() % 41) - 20) * scale / 4;
  switch (random() % 5) {
    case 0:
      return std::fabs(real) < 0x1p62 ? NSNumber(static_cast<std::int64_t>(real)) : NSNumber(random());
    case 1:
      return NSNumber(static_cast<std::uint64_t>(0x1p63) + random() % 3);
    case 2:
      return Decimal(real) + Decimal(static_cast<std::int64_t>(random() % 3) - 1);
    case 3:
      return Decimal(real);
    default:
      return random() % 2 == 0 ? real : std::nextafter(real, infinity);
  }
}

TEST(NumberOrder, IsTheOrderOfTheDigitsAndGoesWithTheHash) {
  std::mt19937_64 random(20260101);
  int equal = 0;
  for (int round = 0; round < 100'000; ++round) {
    const NSNumber a = randomNumber(random), b = randomNumber(random);
    const int expected = Digits(digitsOf(a)).compare(Digits(digitsOf(b)));
    ASSERT_EQ(a <=> b, expected <=> 0) << a << ' ' << b;
    ASSERT_EQ(b <=> a, 0 <=> expected) << a << ' ' << b;
    if (expected == 0) {
      ASSERT_EQ(a.hash(), b.hash()) << a << ' ' << b;
      ++equal;
    }
  }
  EXPECT_GT(equal, 1000);
}

}  // namespace
}  // namespace norvik
