// benchmarks/logging/DDLogLineFormatter_benchmark.cpp - compares the formatter that escapes with the default formatter,
// on one line of the same message: the cost for the thread that writes the file.
//
// g++ 12.2 -O2, 2 virtual cores, 2026-11-22, processor time on a busy machine, best of 3 runs, ours and the default's:
//   plain 121 / 29 ns, names 172 / 29 ns, two lines 139 / 28 ns
#include "NorvikCore/logging/DDLogFileFormatterDefault.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/LogLevel.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace norvik;

struct Text {
  const char *name, *text, *escaped;
};
const Text texts[] = {
    {"plain", "payslip 4711 of department engineering has a net pay of 1739.070000 pounds",
     "payslip 4711 of department engineering has a net pay of 1739.070000 pounds"},
    {"names", "payslip of Zo\u00EB Br\u00F6sel in department Qualit\u00E9 has a net pay of \u00A31,739.07",
     "payslip of Zo\u00EB Br\u00F6sel in department Qualit\u00E9 has a net pay of \u00A31,739.07"},
    {"two lines", "payslip 4711 of department engineering\nhas a net pay of 1739.070000 pounds",
     "payslip 4711 of department engineering\\nhas a net pay of 1739.070000 pounds"},
};

template <class Formatter>
void lineOf(benchmark::State& state, const Text& text, const char* expected) {
  const auto message =
      DDLogMessage::initWithLogMsg(text.text, LOG_LEVEL_INFO, LOG_FLAG_INFO, 0, "PayRun.cpp", "run", 42, Value(), 0);
  const auto formatter = make<Formatter>();
  std::string line;
  formatter->appendLogMessage(line, *message);
  if (!line.ends_with(expected)) {
    std::fprintf(stderr, "%s\n", line.c_str());
    std::exit(1);
  }
  for (auto _ : state) {
    line.clear();
    formatter->appendLogMessage(line, *message);
    benchmark::DoNotOptimize(line.data());
  }
}

}  // namespace

int main(int argc, char** argv) {
  for (const Text& text : texts) {
    const std::string name = std::string("a line, ") + text.name;
    benchmark::RegisterBenchmark((name + "/ours").c_str(), lineOf<DDLogLineFormatter>, text, text.escaped);
    benchmark::RegisterBenchmark((name + "/default").c_str(), lineOf<DDLogFileFormatterDefault>, text, text.text);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
