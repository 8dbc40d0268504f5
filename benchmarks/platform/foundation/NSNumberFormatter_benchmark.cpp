// Compares a number formatter that is kept with ICU's own kept formatter on the same pattern, writing and reading. Each
// uses its natural types: a Decimal and an NSString, a double and UTF-8 characters.
//
// 2026-11-21, Intel Xeon of 2.5 GHz (Cascade Lake), two virtual cores shared with other builds, g++ 12.2, -O2; CPU ns,
// medians of 7 interleaved runs:
//   write money 139, ICU 619 (4.5 times as fast)        read money 121, ICU 1223 (10)
//   write integer 126, ICU 173 (1.4)                    read integer 99, ICU 886 (9.0)
//   write percentage 149, ICU 623 (4.2)                 read percentage 307, ICU 1464 (4.8)
//   write money in brackets 156, ICU 628 (4.0)          read money in brackets 156, ICU 2050 (13)
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <benchmark/benchmark.h>
#include <unicode/decimfmt.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using norvik::Decimal;
using norvik::make;
using norvik::NSLocale;
using norvik::NSNumberFormatter;
using norvik::NSString;
using norvik::Ref;

constexpr std::size_t count = 1024;

/// One number in the types of both sides.
struct Number {
  Decimal decimal;
  double real;
  NSString text;     ///< as the pattern writes it
  std::string utf8;  ///< the same
};

Ref<NSNumberFormatter> ours(const char* pattern) {
  auto formatter = make<NSNumberFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setFormat(pattern);
  formatter->setGeneratesDecimalNumbers(true);
  return formatter;
}

std::shared_ptr<icu::DecimalFormat> icus(const char* pattern) {
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_shared<icu::DecimalFormat>(
      icu::UnicodeString(pattern), new icu::DecimalFormatSymbols(icu::Locale::getUK(), status), status);
  if (U_FAILURE(status)) std::exit(1);
  return format;
}

std::string icuText(const icu::DecimalFormat& format, double number) {
  icu::UnicodeString text;
  std::string utf8;
  format.format(number, text).toUTF8String(utf8);
  return utf8;
}

double icuNumber(const icu::DecimalFormat& format, const std::string& text) {
  icu::Formattable result;
  UErrorCode status = U_ZERO_ERROR;
  format.parse(icu::UnicodeString::fromUTF8(text), result, status);
  return result.getDouble(status);
}

/// Amounts of up to 10 million with `places` digits after the point, a tenth of them negative.
std::vector<Number> numbers(const NSNumberFormatter& formatter, int places) {
  std::mt19937_64 random(1);
  std::vector<Number> result(count);
  for (Number& number : result) {
    const auto magnitude = static_cast<std::int64_t>(random() % 1'000'000'000);
    const std::int64_t units = random() % 10 == 0 ? -magnitude : magnitude;
    number.decimal = Decimal(units).decimalNumberByMultiplyingByPowerOf10(static_cast<std::int16_t>(-places));
    number.real = static_cast<double>(units) / std::pow(10, places);
    number.text = formatter.stringFromNumber(number.decimal);
    number.utf8 = number.text.str();
  }
  return result;
}

void fail(const std::string& name, const std::string& ours, const std::string& icus) {
  std::fprintf(stderr, "%s: \"%s\", but ICU has \"%s\"\n", name.c_str(), ours.c_str(), icus.c_str());
  std::exit(1);
}

void pair(const std::string& name, const char* pattern, int places) {
  const Ref<NSNumberFormatter> kept = ours(pattern);
  const std::shared_ptr<icu::DecimalFormat> peer = icus(pattern);
  const auto all = std::make_shared<std::vector<Number>>(numbers(*kept, places));
  for (const Number& number : *all) {
    if (number.utf8 != icuText(*peer, number.real)) fail(name, number.utf8, icuText(*peer, number.real));
    const auto read = kept->numberFromString(number.text);
    if (!read || read->decimalValue() != number.decimal) fail(name, number.utf8 + " read otherwise", number.utf8);
    if (std::fabs(icuNumber(*peer, number.utf8) - number.real) > 1e-9) fail(name, number.utf8, "another number");
  }
  const auto time = [&](const std::string& subject, auto operation) {
    benchmark::RegisterBenchmark(subject.c_str(), [all, operation](benchmark::State& state) {
      std::size_t i = 0;
      for (auto _ : state) {
        auto result = operation((*all)[i++ % count]);
        benchmark::DoNotOptimize(result);
      }
    });
  };
  time("write " + name + "/ours", [kept](const Number& n) { return kept->stringFromNumber(n.decimal); });
  time("write " + name + "/ICU", [peer](const Number& n) { return icuText(*peer, n.real); });
  time("read " + name + "/ours", [kept](const Number& n) { return kept->numberFromString(n.text); });
  time("read " + name + "/ICU", [peer](const Number& n) { return icuNumber(*peer, n.utf8); });
}

}  // namespace

int main(int argc, char** argv) {
  pair("money", "#,##0.00##", 2);
  pair("percentage", "#,##0.00##%", 6);
  pair("integer", "#,##0", 0);
  pair("money in brackets", "\u00A3#,##0.00;(\u00A3#,##0.00)", 2);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
