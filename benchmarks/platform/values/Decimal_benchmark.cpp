// Compares Decimal, on money and on numbers of 34 digits, with std::decimal::decimal128 (g++ only), which holds 34
// digits, and with Boost's cpp_dec_float<38>; running sums with a loop over int64; and reading amounts with a loop over
// their characters in 64 bits. Debian 12 has no package of libmpdec.
//
// 2026-11-23, Intel Xeon of 2.3 GHz (Emerald Rapids), two virtual cores shared with a dozen builds, g++ 12.2, -O2; ns
// per operation, medians of 7 runs: ours, decimal128, cpp_dec_float.
//   add 2.3, 13.9, 17                      add amount and rate 3.5, 15.5, 16
//   compare 1.6, 6.8, 3.0                  multiply 1.6, 26, 30
//   divide 21, 88, 388                     round to 2 places 3.5, 53, 470
//   parse 7.4, -, 152 (loop 9.0)           print 9.7, -, 754
//   multiply 34 digits 23, 108, 33         round 34 digits 10, 55, 490
//   parse 34 digits 31, -, 309             print 34 digits 46, -, 730
//   sum of a million 1.7, 20, - (int64 0.4), of two exponents 1.9, 30, -; other runs, with the memory in use: 3.5, 2.2
// The machine was busy during the last runs; these are CPU times. Before the sum stayed in registers, the sum of two
// exponents took 3.2 ns, and parsing took 8.2 ns before its parts did.

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/DecimalSum.h"
#include "NorvikCore/platform/values/Decimal_charconv.h"

#include <benchmark/benchmark.h>

#include <boost/multiprecision/cpp_dec_float.hpp>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#if defined(__GNUC__) && !defined(__clang__)
#define NORVIK_STD_DECIMAL 1
#include <decimal/decimal>
#endif

namespace {

using norvik::Decimal;
using norvik::DecimalSum;
using CppDecFloat =
    boost::multiprecision::number<boost::multiprecision::cpp_dec_float<38>, boost::multiprecision::et_off>;

constexpr std::size_t count = 1024;
constexpr std::size_t million = 1'000'000;

enum class Places { two, four, mixed };

/// The same amounts in every type.
struct Amounts {
  std::vector<std::int64_t> pennies;
  std::vector<Decimal> decimal;
  std::vector<CppDecFloat> boost;
  std::vector<std::string> text;
#ifdef NORVIK_STD_DECIMAL
  std::vector<std::decimal::decimal128> standard;
#endif

  /// Amounts of 0.01 to 99,999.99, a tenth of them negative; or rates of four places; or both in random order.
  Amounts(std::size_t size, std::uint64_t seed, Places kind = Places::two) {
    std::mt19937_64 random(seed);
    for (std::size_t i = 0; i < size; ++i) {
      const auto magnitude = static_cast<std::int64_t>(1 + random() % 9'999'999);
      const bool isRate = kind == Places::four || (kind == Places::mixed && random() % 2 == 0);
      const std::int64_t units = !isRate && random() % 10 == 0 ? -magnitude : magnitude;
      const int places = isRate ? 4 : 2;
      pennies.push_back(units);
      decimal.push_back(Decimal(units).decimalNumberByMultiplyingByPowerOf10(static_cast<std::int16_t>(-places)));
      text.push_back(decimal.back().stringValue());
      boost.emplace_back(text.back());
#ifdef NORVIK_STD_DECIMAL
      standard.push_back(std::decimal::make_decimal128(static_cast<long long>(units), -places));
#endif
    }
  }
};

const Amounts& first() {
  static const Amounts amounts(count, 1);
  return amounts;
}
const Amounts& second() {
  static const Amounts amounts(count, 2);
  return amounts;
}
const Amounts& rates() {
  static const Amounts amounts(count, 3, Places::four);
  return amounts;
}

/// Numbers of 34 digits, which is all that decimal128 holds: 15 before the point and 19 after it.
struct WideNumbers {
  std::vector<Decimal> decimal;
  std::vector<CppDecFloat> boost;
  std::vector<std::string> text;
#ifdef NORVIK_STD_DECIMAL
  std::vector<std::decimal::decimal128> standard;
#endif

  explicit WideNumbers(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    for (std::size_t i = 0; i < count; ++i) {
      constexpr std::uint64_t power = 100'000'000'000'000'000;  // 10^17
      const std::uint64_t upper = power / 10 + random() % (power / 10 * 9), lower = random() % power;
      std::string digits = std::to_string(lower);
      digits.insert(0, 17 - digits.size(), '0');
      digits = std::to_string(upper) + digits;
      text.push_back(digits.insert(15, 1, '.'));
      decimal.push_back(Decimal::decimalNumberWithString(text.back()));
      boost.emplace_back(text.back());
#ifdef NORVIK_STD_DECIMAL
      standard.push_back(std::decimal::make_decimal128(static_cast<long long>(upper), -2) +
                         std::decimal::make_decimal128(static_cast<long long>(lower), -19));
#endif
    }
  }
};

const WideNumbers& firstWide() {
  static const WideNumbers numbers(5);
  return numbers;
}
const WideNumbers& secondWide() {
  static const WideNumbers numbers(6);
  return numbers;
}

void fail(const char* subject, const std::string& ours, const std::string& expected) {
  std::fprintf(stderr, "%s: %s instead of %s\n", subject, ours.c_str(), expected.c_str());
  std::exit(1);
}

void require(const char* subject, const Decimal& ours, const CppDecFloat& peer) {
  const CppDecFloat mine(ours.stringValue());
  if (abs(mine - peer) > abs(peer) * CppDecFloat("1e-36")) fail(subject, ours.stringValue(), peer.str());
}

/// Reads [-]digits[.digits] of at most 19 characters after the sign by a loop in 64 bits.
struct LoopedNumber {
  std::uint64_t mantissa = 0;
  int places = 0;
  bool isNegative = false, isNumber = false;

  [[gnu::noinline]] explicit LoopedNumber(const std::string& text) {
    const char *p = text.data(), *const last = p + text.size(), *point = nullptr;
    isNegative = p != last && *p == '-';
    if (isNegative) ++p;
    if (p == last || last - p > 19) return;
    for (; p != last; ++p) {
      const auto digit = static_cast<unsigned char>(*p - '0');
      if (digit < 10) {
        mantissa = mantissa * 10 + digit;
      } else if (*p == '.' && !point) {
        point = p + 1;
      } else {
        return;
      }
    }
    places = point ? static_cast<int>(last - point) : 0;
    isNumber = true;
  }
};

/// Checks every operation on every pair before anything is timed.
void checkAnswers() {
  const norvik::NSDecimalNumberHandler places({.scale = 2});
  for (std::size_t i = 0; i < count; ++i) {
    const Decimal &a = first().decimal[i], &b = second().decimal[i], &rate = rates().decimal[i];
    const CppDecFloat &x = first().boost[i], &y = second().boost[i], &z = rates().boost[i];
    require("add", a + b, x + y);
    require("multiply", a * rate, x * z);
    require("divide", a / b, x / y);
    if ((a < b) != (x < y)) fail("compare", a.stringValue(), b.stringValue());
    const Decimal product = a * rate;
    const auto rounded = product.decimalNumberByRoundingAccordingToBehavior(places);
    const auto units = first().pennies[i] * rates().pennies[i];  // in millionths
    const auto half = units < 0 ? -5000 : 5000;
    require("round", rounded, CppDecFloat((units + half) / 10000) / 100);
    if (Decimal::parse(first().text[i]) != a) fail("parse", first().text[i], a.stringValue());
    const LoopedNumber looped(first().text[i]);
    if (!looped.isNumber || looped.mantissa != a.parts().mantissaLow || -looped.places != a.exponent() ||
        looped.isNegative != a.isNegative()) {
      fail("parse by a loop", first().text[i], a.stringValue());
    }
    const Decimal& wide = firstWide().decimal[i];
    if (wide.stringValue() != firstWide().text[i]) fail("parse 34 digits", wide.stringValue(), firstWide().text[i]);
    require("multiply 34 digits", wide * secondWide().decimal[i], firstWide().boost[i] * secondWide().boost[i]);
    require("round 34 digits", wide.decimalNumberByRoundingAccordingToBehavior(places),
            round(firstWide().boost[i] * 100) / 100);
#ifdef NORVIK_STD_DECIMAL
    const auto standard = first().standard[i] * rates().standard[i];
    if (static_cast<double>(std::decimal::decimal128_to_double(standard)) != product.doubleValue()) {
      fail("decimal128", product.stringValue(), std::to_string(std::decimal::decimal128_to_double(standard)));
    }
#endif
  }
}

/// Times `operation(a, b)` over all pairs; the figures are per operation.
template <class A, class B, class Operation>
void run(benchmark::State& state, const std::vector<A>& a, const std::vector<B>& b, Operation operation) {
  while (state.KeepRunningBatch(count)) {
    for (std::size_t i = 0; i < count; ++i) {
      auto result = operation(a[i], b[i]);
      benchmark::DoNotOptimize(result);
    }
  }
}

const auto add = [](const auto& a, const auto& b) { return a + b; };
const auto multiply = [](const auto& a, const auto& b) { return a * b; };
const auto divide = [](const auto& a, const auto& b) { return a / b; };
const auto less = [](const auto& a, const auto& b) { return a < b; };

template <class Numbers, class Operation>
void pair(const char* subject, const Numbers& a, const Numbers& b, Operation operation) {
  const std::string name(subject);
  benchmark::RegisterBenchmark((name + "/ours").c_str(), [&a, &b, operation](benchmark::State& state) {
    run(state, a.decimal, b.decimal, operation);
  });
#ifdef NORVIK_STD_DECIMAL
  benchmark::RegisterBenchmark((name + "/decimal128").c_str(), [&a, &b, operation](benchmark::State& state) {
    run(state, a.standard, b.standard, operation);
  });
#endif
  benchmark::RegisterBenchmark((name + "/cpp_dec_float").c_str(), [&a, &b, operation](benchmark::State& state) {
    run(state, a.boost, b.boost, operation);
  });
}

/// `Numbers` has the same numbers as Decimal, decimal128 and cpp_dec_float.
template <class Numbers>
void registerRounding(const std::string& subject, const Numbers& numbers) {
  benchmark::RegisterBenchmark((subject + "/ours").c_str(), [&numbers](benchmark::State& state) {
    const norvik::NSDecimalNumberHandler places({.scale = 2});
    run(state, numbers.decimal, numbers.decimal,
        [&](const Decimal& a, const Decimal&) { return a.decimalNumberByRoundingAccordingToBehavior(places); });
  });
#ifdef NORVIK_STD_DECIMAL
  benchmark::RegisterBenchmark((subject + "/decimal128").c_str(), [&numbers](benchmark::State& state) {
    // The type has no operation for it. It rounds beyond 34 digits, so adding and subtracting 10^32 leaves two places.
    const auto shift = std::decimal::make_decimal128(1LL, 31) * std::decimal::make_decimal128(5LL, 0);
    run(state, numbers.standard, numbers.standard, [&](const auto& a, const auto&) { return (a + shift) - shift; });
  });
#endif
  benchmark::RegisterBenchmark((subject + "/cpp_dec_float").c_str(), [&numbers](benchmark::State& state) {
    const CppDecFloat hundred(100);
    run(state, numbers.boost, numbers.boost,
        [&](const CppDecFloat& a, const CppDecFloat&) { return round(a * hundred) / hundred; });
  });
}

/// Amounts times rates: six places.
struct Products {
  std::vector<Decimal> decimal;
  std::vector<CppDecFloat> boost;
#ifdef NORVIK_STD_DECIMAL
  std::vector<std::decimal::decimal128> standard;
#endif

  Products() {
    for (std::size_t i = 0; i < count; ++i) {
      decimal.push_back(first().decimal[i] * rates().decimal[i]);
      boost.push_back(first().boost[i] * rates().boost[i]);
#ifdef NORVIK_STD_DECIMAL
      standard.push_back(first().standard[i] * rates().standard[i]);
#endif
    }
  }
};

template <class Numbers>
void registerText(const std::string& suffix, const Numbers& numbers) {
  const auto named = [&suffix](const char* subject, const char* who) { return subject + suffix + '/' + who; };
  benchmark::RegisterBenchmark(named("parse", "ours").c_str(), [&numbers](benchmark::State& state) {
    run(state, numbers.text, numbers.text,
        [](const std::string& text, const std::string&) { return Decimal::decimalNumberWithString(text); });
  });
  benchmark::RegisterBenchmark(named("parse", "cpp_dec_float").c_str(), [&numbers](benchmark::State& state) {
    run(state, numbers.text, numbers.text,
        [](const std::string& text, const std::string&) { return CppDecFloat(text); });
  });
  benchmark::RegisterBenchmark(named("print", "ours").c_str(), [&numbers](benchmark::State& state) {
    run(state, numbers.decimal, numbers.decimal, [](const Decimal& a, const Decimal&) { return a.stringValue(); });
  });
  benchmark::RegisterBenchmark(named("print", "cpp_dec_float").c_str(), [&numbers](benchmark::State& state) {
    run(state, numbers.boost, numbers.boost,
        [](const CppDecFloat& a, const CppDecFloat&) { return a.str(0, std::ios_base::fmtflags{}); });
  });
}

/// Sums of a million amounts, of one exponent or of two in random order.
void registerSums(const std::string& subject, const Amounts& amounts) {
  static const auto sum = [](const auto& numbers, auto total) {
    for (const auto& number : numbers) total += number;
    return total;
  };
  const Decimal total = sum(amounts.decimal, DecimalSum()).value();
  if (total.parts() != sum(amounts.decimal, Decimal()).parts()) fail(subject.c_str(), total.stringValue(), "another");
  require(subject.c_str(), total, sum(amounts.boost, CppDecFloat(0)));
  const auto time = [&subject](const char* who, const auto& numbers, auto zero) {
    benchmark::RegisterBenchmark((subject + '/' + who).c_str(), [&numbers, zero](benchmark::State& state) {
      while (state.KeepRunningBatch(million)) {
        auto result = sum(numbers, zero);
        benchmark::DoNotOptimize(result);
      }
    });
  };
  time("ours", amounts.decimal, DecimalSum());
  time("additions", amounts.decimal, Decimal());
  time("int64", amounts.pennies, std::int64_t{0});
#ifdef NORVIK_STD_DECIMAL
  time("decimal128", amounts.standard, std::decimal::decimal128(0));
#endif
}

}  // namespace

int main(int argc, char** argv) {
  checkAnswers();
  pair("add", first(), second(), add);
  pair("add amount and rate", first(), rates(), add);
  pair("multiply", first(), rates(), multiply);
  pair("divide", first(), second(), divide);
  pair("compare", first(), second(), less);
  pair("multiply 34 digits", firstWide(), secondWide(), multiply);
  static const Products products;
  registerRounding("round to 2 places", products);
  registerRounding("round 34 digits", firstWide());
  registerText("", first());
  benchmark::RegisterBenchmark("parse/loop", [](benchmark::State& state) {
    run(state, first().text, first().text, [](const std::string& text, const auto&) { return LoopedNumber(text); });
  });
  registerText(" 34 digits", firstWide());
  static const Amounts alike(million, 4), mixed(million, 7, Places::mixed);
  registerSums("sum of a million", alike);
  registerSums("sum of two exponents", mixed);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
