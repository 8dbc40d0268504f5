// Times the start of a program that links the library and does nothing, with all its classes. The peer is a program
// that links only ICU and SQLite, which the library needs. A third program also looks a class up, which registers the
// classes.
//
// 2026-11-23, Intel Xeon of 2.5 GHz, two virtual cores, very busy, g++ 12.2, -O2; medians of 5 runs, in milliseconds:
//   start 5.5, ICU and SQLite 4.5 (1.22 times); start and look up a class 5.7
// `perf stat` counts 2.35 ms of processor time and 246 page faults (ICU and SQLite: 2.2 and 196), valgrind's
// lackey 5.07 million instructions (4.32). While loading registered the classes, and the loader looked the library's
// own names up, these were 3.1 ms, 303 and 6.92 million.
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
