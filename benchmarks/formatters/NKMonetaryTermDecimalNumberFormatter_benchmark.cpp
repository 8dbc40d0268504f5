// Times an amount in currency style, as a background run writes it: on a thread other than the main thread. The peers
// are a formatter that the caller keeps, and a formatter that is created for each amount.
//
// 2026-11-23, Intel Xeon of 2.5 GHz, two virtual cores, very busy, g++ 12.2, -O2; CPU ns, medians of 5 runs:
//   amount in currency style 49, a kept formatter 39, a formatter for each 29,900, which was the way before
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

namespace {

using norvik::Decimal;
using norvik::make;
using norvik::nk_currencyStyleString;
using norvik::NKMonetaryTermDecimalNumberFormatter;
using norvik::NSLocale;
using norvik::NSString;
using norvik::Ref;

constexpr std::size_t count = 1024;

const std::vector<Decimal>& amounts() {
  static const std::vector<Decimal> all = [] {
    std::mt19937_64 random(1);
    std::vector<Decimal> made;
    for (std::size_t i = 0; i < count; ++i)
      made.push_back(Decimal(static_cast<std::int64_t>(random() % 1'000'000)) / Decimal(100));
    return made;
  }();
  return all;
}

Ref<NKMonetaryTermDecimalNumberFormatter> formatter() {
  auto made = make<NKMonetaryTermDecimalNumberFormatter>();
  made->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  return made;
}

/// Times the writing on a thread of its own.
template <class Write>
void onAThread(benchmark::State& state, Write write) {
  std::thread([&] {
    std::size_t i = 0;
    for (auto _ : state) {
      NSString text = write(amounts()[i++ % count]);
      benchmark::DoNotOptimize(text);
    }
  }).join();
}

void currencyStyle(benchmark::State& state) { onAThread(state, nk_currencyStyleString); }

void keptFormatter(benchmark::State& state) {
  onAThread(state, [kept = formatter()](const Decimal& amount) { return kept->stringFromNumber(amount); });
}

void formatterForEach(benchmark::State& state) {
  onAThread(state, [](const Decimal& amount) { return formatter()->stringFromNumber(amount); });
}

}  // namespace

BENCHMARK(currencyStyle)->Name("amount in currency style/ours")->UseRealTime();
BENCHMARK(keptFormatter)->Name("amount in currency style/a kept formatter")->UseRealTime();
BENCHMARK(formatterForEach)->Name("amount in currency style/a formatter for each")->UseRealTime();

int main(int argc, char** argv) {
  const Ref<NKMonetaryTermDecimalNumberFormatter> kept = formatter();
  std::thread([&] {
    for (const Decimal& amount : amounts()) {
      if (nk_currencyStyleString(amount) == kept->stringFromNumber(amount)) continue;
      std::fprintf(stderr, "wrong text for %s\n", amount.stringValue().c_str());
      std::exit(1);
    }
  }).join();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
