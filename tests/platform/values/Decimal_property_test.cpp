// Decimal compared with a model that calculates as on paper, on random pairs of numbers, and laws that hold for all.

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/DecimalSum.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/NumberHash.h"
#include "tests/support/DecimalModel.h"
#include "tests/support/DecimalSamples.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace norvik;
using norvik::test::DecimalSamples;
using norvik::test::Sample;

// Sanitizers slow the model down twentyfold; with them a twentieth of the pairs is sufficient.
#if defined(NK_TEST_ADDRESS_SANITIZER) || defined(NK_TEST_THREAD_SANITIZER)
constexpr int pairs = 5'000;
#else
constexpr int pairs = 100'000;
#endif

class DecimalModelTest : public testing::TestWithParam<model::Mode> {
 protected:
  DecimalSamples samples{2'024'04'06 + static_cast<std::uint64_t>(GetParam())};

  /// Half of the behaviours round only to 38 digits, a quarter to pennies, a quarter to any scale. None raises.
  NSDecimalNumberHandler behavior() {
    const int kind = samples.below(4);
    const int scale = kind < 2 ? NSDecimalNoScale : kind == 2 ? 2 : samples.below(340) - 170;
    return NSDecimalNumberHandler({.roundingMode = static_cast<NSRoundingMode>(GetParam()),
                                   .scale = static_cast<std::int16_t>(scale),
                                   .raiseOnOverflow = false,
                                   .raiseOnUnderflow = false,
                                   .raiseOnDivideByZero = false});
  }

  static std::string text(const Sample& s) {
    return (s.number.negative ? "-" : "") + s.number.digits + "E" + std::to_string(s.number.exponent);
  }
};

/// The parts of the model's result; not-a-number for an error.
Decimal::Parts expected(const model::Result& result) {
  if (result.outcome != model::Outcome::number) return {.isNaN = true};
  const model::Number& n = result.number;
  return DecimalSamples::make(n.digits, static_cast<int>(n.exponent), n.negative).decimal.parts();
}

#define EXPECT_MODEL(actual, result, a, b, behavior)                                                                  \
  ASSERT_TRUE((actual).parts() == expected(result))                                                                   \
      << text(a) << " and " << text(b) << ", scale " << (behavior).scale() << ": " << (actual) << (actual).exponent() \
      << ", model " << model::print((result).number) << (result).number.exponent

/// The remainder of two whole numbers, computed digit by digit; the divisor has at most 37 digits.
std::string remainderOnPaper(const std::string& dividend, const std::string& divisor) {
  detail::UInt128 by = 0, rest = 0;
  for (const char c : divisor) by = by * 10 + static_cast<unsigned>(c - '0');
  for (const char c : dividend) rest = (rest * 10 + static_cast<unsigned>(c - '0')) % by;
  std::string digits;
  for (; rest != 0; rest /= 10) digits.insert(0, 1, static_cast<char>('0' + static_cast<int>(rest % 10)));
  return digits.empty() ? "0" : digits;
}

TEST(Decimal_property, RemaindersAreThoseOnPaper) {
  DecimalSamples samples(2'024'11);
  int compared = 0;
  for (int i = 0; i < pairs; ++i) {
    const Decimal a = samples.next().decimal, b = samples.next().decimal;
    if (a.isNaN() || b.isNaN() || b.isZero()) continue;
    const int exponent = std::min(a.exponent(), b.exponent());
    const auto whole = [exponent](const Decimal& d) {
      const Decimal::Parts parts = d.parts();
      const Decimal mantissa =
          Decimal::fromParts({.mantissaHigh = parts.mantissaHigh, .mantissaLow = parts.mantissaLow}).value();
      return mantissa.stringValue() + std::string(static_cast<std::size_t>(d.exponent() - exponent), '0');
    };
    if (whole(b).size() > 37) continue;
    ++compared;
    const Decimal rest = a % b;
    ASSERT_EQ(rest.exponent(), exponent);
    ASSERT_EQ(whole(rest), remainderOnPaper(whole(a), whole(b))) << a << " % " << b;
    ASSERT_EQ(rest.isNegative(), a.isNegative() && !rest.isZero());
  }
  EXPECT_GT(compared, pairs / 10);
}

TEST_P(DecimalModelTest, SumsAreTheModels) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next(), b = samples.next();
    const auto handler = behavior();
    const auto exact = model::add(a.number, b.number);
    EXPECT_MODEL(a.decimal.decimalNumberByAdding(b.decimal, handler), model::round(exact, GetParam(), handler.scale()),
                 a, b, handler);
  }
}

TEST_P(DecimalModelTest, DifferencesAreTheModels) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next(), b = samples.next();
    const auto handler = behavior();
    model::Number minus = b.number;
    minus.negative = !minus.negative && !minus.digits.empty();
    const auto exact = model::add(a.number, minus);
    EXPECT_MODEL(a.decimal.decimalNumberBySubtracting(b.decimal, handler),
                 model::round(exact, GetParam(), handler.scale()), a, b, handler);
  }
}

TEST_P(DecimalModelTest, ProductsAreTheModels) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next(), b = samples.next();
    const auto handler = behavior();
    const auto exact = model::multiply(a.number, b.number);
    EXPECT_MODEL(a.decimal.decimalNumberByMultiplyingBy(b.decimal, handler),
                 model::round(exact, GetParam(), handler.scale()), a, b, handler);
  }
}

TEST_P(DecimalModelTest, QuotientsAreTheModels) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next(), b = samples.next();
    const auto handler = behavior();
    EXPECT_MODEL(a.decimal.decimalNumberByDividingBy(b.decimal, handler),
                 model::divide(a.number, b.number, GetParam(), handler.scale()), a, b, handler);
  }
}

TEST_P(DecimalModelTest, RoundedNumbersAreTheModels) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next();
    const int near = -static_cast<int>(a.number.exponent) - samples.below(42);
    const NSDecimalNumberHandler handler({.roundingMode = static_cast<NSRoundingMode>(GetParam()),
                                          .scale = static_cast<std::int16_t>(near),
                                          .raiseOnOverflow = false});
    EXPECT_MODEL(a.decimal.decimalNumberByRoundingAccordingToBehavior(handler),
                 model::round(a.number, GetParam(), near), a, a, handler);
  }
}

TEST_P(DecimalModelTest, MovingThePointIsTheModels) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next();
    const int power = samples.below(300) - 150;
    const auto handler = behavior();
    model::Number moved = a.number;
    moved.exponent += power;
    EXPECT_MODEL(a.decimal.decimalNumberByMultiplyingByPowerOf10(static_cast<std::int16_t>(power), handler),
                 model::round(moved, GetParam(), handler.scale()), a, a, handler);
  }
}

TEST_P(DecimalModelTest, PowersAreTheModels) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next();
    const int power = 1 + samples.below(9);
    const auto handler = behavior();
    model::Number product = a.number;
    for (int k = 1; k < power; ++k) product = model::multiply(product, a.number);
    EXPECT_MODEL(a.decimal.decimalNumberByRaisingToPower(static_cast<std::uint64_t>(power), handler),
                 model::round(product, GetParam(), handler.scale()), a, a, handler)
        << ", power " << power;
  }
}

TEST_P(DecimalModelTest, FaultsRaiseWhatTheModelFinds) {
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next(), b = samples.next();
    const NSDecimalNumberHandler all({.roundingMode = static_cast<NSRoundingMode>(GetParam()),
                                      .scale = static_cast<std::int16_t>(samples.coin() ? NSDecimalNoScale : 2),
                                      .raiseOnExactness = true});
    const int operation = samples.below(3);
    const model::Result result = operation == 0 ? model::round(model::add(a.number, b.number), GetParam(), all.scale())
                                 : operation == 1
                                     ? model::round(model::multiply(a.number, b.number), GetParam(), all.scale())
                                     : model::divide(a.number, b.number, GetParam(), all.scale());
    const std::string name =
        result.outcome == model::Outcome::divideByZero               ? "NSDecimalNumberDivideByZeroException"
        : result.outcome == model::Outcome::underflow                ? "NSDecimalNumberUnderflowException"
        : result.outcome == model::Outcome::number && result.inexact ? "NSDecimalNumberExactnessException"
        : result.outcome == model::Outcome::overflow
            ? (result.inexact ? "NSDecimalNumberExactnessException" : "NSDecimalNumberOverflowException")
            : "";
    std::string raised;
    try {
      const Decimal value = operation == 0   ? a.decimal.decimalNumberByAdding(b.decimal, all)
                            : operation == 1 ? a.decimal.decimalNumberByMultiplyingBy(b.decimal, all)
                                             : a.decimal.decimalNumberByDividingBy(b.decimal, all);
      ASSERT_TRUE(value.parts() == expected(result)) << text(a) << " and " << text(b) << ", operation " << operation;
    } catch (const NSException& exception) {
      raised = exception.name().str();
    }
    ASSERT_EQ(raised, name) << text(a) << " and " << text(b) << ", operation " << operation;
  }
}

std::string modeName(const testing::TestParamInfo<model::Mode>& mode) {
  const char* const names[] = {"Plain", "Down", "Up", "Bankers"};
  return names[static_cast<int>(mode.param)];
}

INSTANTIATE_TEST_SUITE_P(EveryMode, DecimalModelTest,
                         testing::Values(model::Mode::plain, model::Mode::down, model::Mode::up, model::Mode::bankers),
                         modeName);

TEST(DecimalProperty, OperatorsAreTheModelsOrRaise) {
  DecimalSamples samples(1);
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next(), b = samples.next();
    const int operation = samples.below(4);
    model::Number minus = b.number;
    minus.negative = !minus.negative && !minus.digits.empty();
    const auto result =
        operation == 0   ? model::round(model::add(a.number, b.number), model::Mode::plain, model::noScale)
        : operation == 1 ? model::round(model::add(a.number, minus), model::Mode::plain, model::noScale)
        : operation == 2 ? model::round(model::multiply(a.number, b.number), model::Mode::plain, model::noScale)
                         : model::divide(a.number, b.number, model::Mode::plain, model::noScale);
    Decimal actual = Decimal::notANumber();
    try {
      actual = operation == 0   ? a.decimal + b.decimal
               : operation == 1 ? a.decimal - b.decimal
               : operation == 2 ? a.decimal * b.decimal
                                : a.decimal / b.decimal;
    } catch (const NSException&) {
      ASSERT_NE(result.outcome, model::Outcome::number);
    }
    ASSERT_TRUE(actual.parts() == expected(result)) << a.decimal << " and " << b.decimal << ", operation " << operation;
  }
}

TEST(DecimalProperty, TheOrderIsTheModelsAndEqualNumbersHaveOneHash) {
  DecimalSamples samples(2);
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next(), b = samples.next();
    const int order = model::compare(a.number, b.number);
    ASSERT_EQ(static_cast<int>(a.decimal.compare(b.decimal)), order) << a.decimal << " and " << b.decimal;
    ASSERT_EQ(static_cast<int>(b.decimal.compare(a.decimal)), -order) << a.decimal << " and " << b.decimal;
    ASSERT_EQ(a.decimal == b.decimal, order == 0);
    if (order == 0) {
      ASSERT_EQ(a.decimal.hash(), b.decimal.hash()) << a.decimal << " and " << b.decimal;
    }
  }
}

TEST(DecimalProperty, ZerosAddedAtTheEndChangeNeitherValueNorHash) {
  DecimalSamples samples(3);
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next();
    const int room = 38 - static_cast<int>(a.number.digits.size());
    const int zeros = std::min(samples.below(room + 1), static_cast<int>(a.number.exponent) + 128);
    const Sample b = DecimalSamples::make(a.number.digits + std::string(static_cast<std::size_t>(zeros), '0'),
                                          static_cast<int>(a.number.exponent) - zeros, a.number.negative);
    ASSERT_EQ(a.decimal, b.decimal);
    ASSERT_EQ(a.decimal.hash(), b.decimal.hash()) << a.decimal << " and " << b.decimal;
  }
}

TEST(DecimalProperty, PrintedTextIsTheModelsAndReadsBack) {
  DecimalSamples samples(4);
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next();
    const std::string text = a.decimal.stringValue();
    ASSERT_EQ(text, model::print(a.number));
    const auto read = Decimal::parse(text);
    ASSERT_TRUE(read.has_value()) << text;
    ASSERT_EQ(*read, a.decimal) << text;
    if (a.decimal.exponent() <= 0) {
      ASSERT_EQ(read->parts(), a.decimal.parts()) << text;
    }
  }
}

TEST(DecimalProperty, TextOfAnyLengthIsReadAsTheModelRoundsIt) {
  DecimalSamples samples(5);
  for (int i = 0; i < pairs; ++i) {
    std::string text = samples.coin() ? "-" : "";
    const int length = 1 + samples.below(70), point = samples.below(80);
    for (int k = 0; k < length; ++k) {
      if (k == point) text += '.';
      text += static_cast<char>(samples.below(3) == 0 ? '0' : samples.below(5) == 0 ? '5' : '0' + samples.below(10));
    }
    const auto result = model::round(model::parse(text), model::Mode::plain, model::noScale);
    const auto read = Decimal::parse(text);
    ASSERT_TRUE(read.has_value()) << text;
    ASSERT_TRUE(read->parts() == expected(result)) << text << " read as " << *read;
  }
}

TEST(DecimalProperty, EveryDoubleReadsBackFromItsDecimal) {
  DecimalSamples samples(6);
  std::mt19937_64 random(7);
  for (int i = 0; i < pairs; ++i) {
    const double magnitudes[] = {1e-100, 1e-9, 1.0, 1e6, 1e17, 1e60, 1e140};
    const double value =
        static_cast<double>(static_cast<std::int64_t>(random())) * 1e-19 * magnitudes[samples.below(7)];
    ASSERT_EQ(Decimal(value).doubleValue(), value);
    ASSERT_EQ(numberHash(value), Decimal(value).hash());
  }
}

TEST(DecimalProperty, TheDoubleOfADecimalIsTheNearest) {
  DecimalSamples samples(8);
  for (int i = 0; i < pairs; ++i) {
    const Sample a = samples.next();
    ASSERT_EQ(a.decimal.doubleValue(), std::stod(model::print(a.number))) << a.decimal;
  }
}

TEST(DecimalProperty, ARunningSumIsWhatPlainAdditionsGive) {
  DecimalSamples samples(9);
  for (int round = 0; round < pairs / 50; ++round) {
    DecimalSum sum;
    Decimal plain;
    const bool amounts = samples.coin();
    for (int i = 0; i < 50; ++i) {
      Sample a = samples.next();
      if (amounts)
        a = DecimalSamples::make(std::to_string(samples.below(1'000'000)), -samples.below(4), samples.coin());
      bool raised = false;
      try {
        plain += a.decimal;
      } catch (const NSException&) {
        raised = true;
      }
      if (raised) {
        ASSERT_THROW(sum += a.decimal, NSException);
      } else {
        sum += a.decimal;
      }
      ASSERT_TRUE(sum.value().parts() == plain.parts()) << sum.value() << ", plain " << plain;
    }
  }
}

}  // namespace
