// Compares Decimal on money operands with std::decimal::decimal128 (g++ only) and Boost's cpp_dec_float<38>, and a
// running sum with a loop over int64.
//
// 2026-11-21, Intel Xeon of 2.5 GHz (Cascade Lake), two virtual cores shared with other builds, g++ 12.2, -O2; ns per
// operation, medians of 21 interleaved runs, and the ratios:
//   add 6.9, decimal128 39 (5.5)               compare 4.9, decimal128 22 (4.4)
//   multiply 4.4, decimal128 78 (17)           divide 49, decimal128 165 (3.3)
//   round to 2 places 20, decimal128 144 (7)   add amount and rate 17, decimal128 44 (2.5)
//   parse 30, cpp_dec_float 317 (10)           print 43, cpp_dec_float 1942 (46)
//   sum of a million 6.7, int64 1.9 (3.5 times a loop over int64)

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

/// The same amounts in every type.
struct Amounts {
  std::vector<std::int64_t> pennies;
  std::vector<Decimal> decimal;
  std::vector<CppDecFloat> boost;
  std::vector<std::string> text;
#ifdef NORVIK_STD_DECIMAL
  std::vector<std::decimal::decimal128> standard;
#endif

  /// Amounts of 0.01 to 99,999.99, a tenth of them negative; rates of four places if `rates` is true.
  Amounts(std::size_t size, std::uint64_t seed, bool rates = false) {
    std::mt19937_64 random(seed);
    for (std::size_t i = 0; i < size; ++i) {
      const auto magnitude = static_cast<std::int64_t>(1 + random() % 9'999'999);
      const std::int64_t units = !rates && random() % 10 == 0 ? -magnitude : magnitude;
      const int places = rates ? 4 : 2;
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
  static const Amounts amounts(count, 3, true);
  return amounts;
}

void fail(const char* subject, const std::string& ours, const std::string& expected) {
  std::fprintf(stderr, "%s: %s instead of %s\n", subject, ours.c_str(), expected.c_str());
  std::exit(1);
}

void require(const char* subject, const Decimal& ours, const CppDecFloat& peer) {
  const CppDecFloat mine(ours.stringValue());
  if (abs(mine - peer) > abs(peer) * CppDecFloat("1e-36")) fail(subject, ours.stringValue(), peer.str());
}

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

template <class Operation>
void pair(const char* subject, const Amounts& a, const Amounts& b, Operation operation) {
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

void registerRounding() {
  static std::vector<Decimal> products;
  static std::vector<CppDecFloat> boost;
  for (std::size_t i = 0; i < count; ++i) {
    products.push_back(first().decimal[i] * rates().decimal[i]);
    boost.push_back(first().boost[i] * rates().boost[i]);
  }
  benchmark::RegisterBenchmark("round to 2 places/ours", [](benchmark::State& state) {
    const norvik::NSDecimalNumberHandler places({.scale = 2});
    run(state, products, products,
        [&](const Decimal& a, const Decimal&) { return a.decimalNumberByRoundingAccordingToBehavior(places); });
  });
#ifdef NORVIK_STD_DECIMAL
  static std::vector<std::decimal::decimal128> standard;
  for (std::size_t i = 0; i < count; ++i) standard.push_back(first().standard[i] * rates().standard[i]);
  benchmark::RegisterBenchmark("round to 2 places/decimal128", [](benchmark::State& state) {
    // The type has no operation for it. It rounds beyond 34 digits, so adding and subtracting 10^32 leaves two places.
    const auto shift = std::decimal::make_decimal128(1LL, 31) * std::decimal::make_decimal128(5LL, 0);
    run(state, standard, standard, [&](const auto& a, const auto&) { return (a + shift) - shift; });
  });
#endif
  benchmark::RegisterBenchmark("round to 2 places/cpp_dec_float", [](benchmark::State& state) {
    const CppDecFloat hundred(100);
    run(state, boost, boost, [&](const CppDecFloat& a, const CppDecFloat&) { return round(a * hundred) / hundred; });
  });
}

void registerText() {
  benchmark::RegisterBenchmark("parse/ours", [](benchmark::State& state) {
    run(state, first().text, first().text,
        [](const std::string& text, const std::string&) { return Decimal::decimalNumberWithString(text); });
  });
  benchmark::RegisterBenchmark("parse/cpp_dec_float", [](benchmark::State& state) {
    run(state, first().text, first().text,
        [](const std::string& text, const std::string&) { return CppDecFloat(text); });
  });
  benchmark::RegisterBenchmark("print/ours", [](benchmark::State& state) {
    run(state, first().decimal, first().decimal, [](const Decimal& a, const Decimal&) { return a.stringValue(); });
  });
  benchmark::RegisterBenchmark("print/cpp_dec_float", [](benchmark::State& state) {
    run(state, first().boost, first().boost,
        [](const CppDecFloat& a, const CppDecFloat&) { return a.str(0, std::ios_base::fmtflags{}); });
  });
}

void registerSums() {
  static const Amounts amounts(million, 4);
  static const auto sum = [](const auto& numbers, auto total) {
    for (const auto& number : numbers) total += number;
    return total;
  };
  const Decimal total = sum(amounts.decimal, DecimalSum()).value();
  if (total.parts() != sum(amounts.decimal, Decimal()).parts() ||
      total * 100 != sum(amounts.pennies, std::int64_t{0})) {
    fail("sum", total.stringValue(), std::to_string(sum(amounts.pennies, std::int64_t{0})));
  }
  const auto time = [](const char* name, const auto& numbers, auto zero) {
    benchmark::RegisterBenchmark(name, [&numbers, zero](benchmark::State& state) {
      while (state.KeepRunningBatch(million)) {
        auto result = sum(numbers, zero);
        benchmark::DoNotOptimize(result);
      }
    });
  };
  time("sum of a million/ours", amounts.decimal, DecimalSum());
  time("sum of a million/additions", amounts.decimal, Decimal());
  time("sum of a million/int64", amounts.pennies, std::int64_t{0});
#ifdef NORVIK_STD_DECIMAL
  time("sum of a million/decimal128", amounts.standard, std::decimal::decimal128(0));
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
  registerRounding();
  registerText();
  registerSums();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
