// Times the start of a program that links the library and does nothing, with all its classes. The peers are programs
// that link only ICU and SQLite, which the library needs, and only ICU, because the library loads SQLite when a
// database is first used. Another program also looks a class up, which registers the classes.
//
// 2026-11-23, Intel Xeon of 2.5 GHz, two virtual cores, busy, but these programs before all others (chrt -f 1),
// g++ 12.2, -O2; medians of 300 starts of each in turn, in milliseconds:
//   start 2.31, ICU and SQLite 2.23 (1.04 times), ICU alone 1.99
// Page faults: 230 (ICU and SQLite 199, ICU alone 181); million instructions as valgrind counts them: 3.52
// (4.24, 2.96). While SQLite was loaded at the start, these were 1.17 times, 247 and 5.07.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <string>

extern char** environ;

namespace {

/// Starts the program, waits for its end and returns whether it succeeded.
bool run(const char* program) {
  char* const arguments[] = {const_cast<char*>(program), nullptr};
  pid_t child = 0;
  int status = 0;
  return posix_spawn(&child, program, nullptr, nullptr, arguments, environ) == 0 &&
         waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void start(benchmark::State& state, const char* program) {
  if (!run(program)) {
    std::fprintf(stderr, "%s fails\n", program);
    std::exit(1);
  }
  for (auto _ : state) benchmark::DoNotOptimize(run(program));
}

}  // namespace

int main(int argc, char** argv) {
  const struct {
    const char *name, *program;
  } rows[] = {{"start/ours", NORVIK_START_OF_THE_LIBRARY},
              {"start/ICU and SQLite", NORVIK_START_OF_ITS_LIBRARIES},
              {"start/ICU", NORVIK_START_OF_ICU},
              {"start and look up a class/ours", NORVIK_START_AND_LOOK_UP}};
  for (const auto& row : rows) {
    benchmark::RegisterBenchmark(row.name, [program = row.program](benchmark::State& state) { start(state, program); })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
