// benchmarks/logging/DDLog_benchmark.cpp - compares the cost of a log call for its caller, and the lines per second
// that reach a file, with spdlog's asynchronous logger (queue of 1024, blocking) and the same line.
//
// Subjects that are percentiles or whole runs are measured once, by the clock around each call or run, and reported as
// one iteration. Every line is counted in the files before anything is reported; if a line is lost, the program ends.
//
// g++ 12.2 -O2, 2 virtual cores, 2026-11-22, nothing else running, medians of 3 runs, ours and spdlog's:
//   caller's cost, ns      p50            p99
//     every 3 us           78 / 754       182 / 5,591
//     every 200 us         167 / 2,156    1,033 / 11,612
//     bursts of 500        97 / 672       332 / 6,080
//   a million lines        0.32 s / 1.00 s; from four threads 0.27 s / 3.40 s; rolling at 1 MiB 0.40 s / 1.29 s
//   a suppressed call      0.67 ns / 10.2 ns (load and branch: 0.67 ns)
//   lines of 10,000 that abort() leaves: at once 9,356 / 9,543, 20 ms later 10,000 / 9,994
//   abort() 3 ms after a process's first ten calls leaves all ten in 150 of 150 processes, spdlog in none
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/dispatch/Queue.h"

#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wall"  // the peer's headers cause other warnings
#pragma GCC diagnostic ignored "-Wextra"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wundef"
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>
#pragma GCC diagnostic pop

namespace {

using namespace norvik;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

double secondsSince(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::exit(1);
}

class Folder {
 public:
  Folder() {
    std::string name = (fs::temp_directory_path() / "norvik-benchmark-XXXXXX").string();
    if (!mkdtemp(name.data())) fail("no temporary folder");
    path_ = name;
  }
  ~Folder() { fs::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  [[nodiscard]] const std::string& path() const { return path_; }

  [[nodiscard]] std::size_t lines() const {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(path_)) {
      std::ifstream file(entry.path(), std::ios::binary);
      char bytes[65536];
      while (file.read(bytes, sizeof bytes), file.gcount() > 0) {
        count += static_cast<std::size_t>(std::count(bytes, bytes + file.gcount(), '\n'));
      }
    }
    return count;
  }
  void expectLines(const char* who, std::size_t expected) const {
    if (const std::size_t found = lines(); found != expected) {
      fail(std::string(who) + ": " + std::to_string(found) + " lines of " + std::to_string(expected));
    }
  }

 private:
  std::string path_;
};

/// A logger that writes to a folder, from its construction to finish().
class Subject {
 public:
  virtual ~Subject() = default;
  virtual void call(int number) = 0;
  /// Returns when every line is in its file.
  virtual void finish() = 0;
};

class Ours final : public Subject {
 public:
  enum class Start : std::uint8_t { ready, atOnce };
  Ours(const std::string& folder, std::uint64_t maximumFileSize, Start start = Start::ready) {
    auto manager = DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder));
    manager->setMaximumNumberOfLogFiles(0);
    logger_ = DDFileLogger::initWithLogFileManager(manager);
    logger_->setMaximumFileSize(maximumFileSize);
    DDLog::addLogger(logger_);
    if (start == Start::ready) DDLog::flushLog();
    ddLogLevel = LOG_LEVEL_INFO;
  }
  void call(int number) override {
    DDLogInfo("payslip %d of department %s has a net pay of %f pounds", number, "engineering", number * 0.37);
  }
  void finish() override {
    DDLog::flushLog();
    DDLog::removeLogger(logger_);
    DDLog::flushLog();
    dispatch_sync(logger_->loggerQueue(), [] {});
  }

 private:
  Ref<DDFileLogger> logger_;
};

class Spdlog final : public Subject {
 public:
  Spdlog(const std::string& folder, std::uint64_t maximumFileSize)
      : pool_(std::make_shared<spdlog::details::thread_pool>(1024, 1)) {
    spdlog::sink_ptr sink;
    if (maximumFileSize == 0) {
      sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(folder + "/log.txt");
    } else {
      sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(folder + "/log.txt", maximumFileSize, 1000);
    }
    logger_ = std::make_shared<spdlog::async_logger>("log", sink, pool_, spdlog::async_overflow_policy::block);
    logger_->set_pattern("%Y/%m/%d %H:%M:%S:%e  %v");
  }
  void call(int number) override {
    logger_->info("payslip {} of department {} has a net pay of {:f} pounds", number, "engineering", number * 0.37);
  }
  void finish() override {
    logger_->flush();
    logger_.reset();
    pool_.reset();  // waits for the pool's thread
  }

 private:
  std::shared_ptr<spdlog::details::thread_pool> pool_;
  std::shared_ptr<spdlog::async_logger> logger_;
};

enum class Who { ours, spdlog };
constexpr Who everybody[] = {Who::ours, Who::spdlog};
const char* nameOf(Who who) { return who == Who::ours ? "ours" : "spdlog"; }

std::unique_ptr<Subject> make(Who who, const std::string& folder, std::uint64_t maximumFileSize = 0) {
  if (who == Who::ours) return std::make_unique<Ours>(folder, maximumFileSize);
  return std::make_unique<Spdlog>(folder, maximumFileSize);
}

// The caller's cost

struct Percentiles {
  double p50 = 0, p99 = 0, mean = 0;
};

void waitUntil(Clock::time_point when) {
  while (Clock::now() < when) {
  }
}

/// Makes `count` calls in succession every `interval`, `groups` times.
Percentiles callerCost(Who who, std::chrono::nanoseconds interval, int groups, int count) {
  const Folder folder;
  const auto subject = make(who, folder.path());
  std::vector<double> costs;
  costs.reserve(static_cast<std::size_t>(groups * count));
  for (int i = 0; i < 2000; ++i) subject->call(i);  // warm
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  Clock::time_point next = Clock::now();
  for (int group = 0; group < groups; ++group) {
    next += interval;
    if (interval > std::chrono::microseconds(100)) {
      std::this_thread::sleep_until(next - std::chrono::microseconds(60));
    }
    waitUntil(next);
    for (int i = 0; i < count; ++i) {
      const auto begin = Clock::now();
      subject->call(i);
      costs.push_back(secondsSince(begin));
    }
  }
  subject->finish();
  folder.expectLines(nameOf(who), costs.size() + 2000);
  double sum = 0;
  for (const double cost : costs) sum += cost;
  std::sort(costs.begin(), costs.end());
  return {costs[costs.size() / 2], costs[costs.size() * 99 / 100], sum / static_cast<double>(costs.size())};
}

// Sustained throughput

double secondsForAll(Who who, int threads, int messages, std::uint64_t maximumFileSize) {
  const Folder folder;
  const auto subject = make(who, folder.path(), maximumFileSize);
  std::atomic<bool> go = false;
  std::vector<std::thread> callers;
  for (int t = 0; t < threads; ++t) {
    callers.emplace_back([&] {
      while (!go) std::this_thread::yield();
      for (int i = 0; i < messages / threads; ++i) subject->call(i);
    });
  }
  const auto begin = Clock::now();
  go = true;
  for (std::thread& caller : callers) caller.join();
  subject->finish();
  const double seconds = secondsSince(begin);
  folder.expectLines(nameOf(who), static_cast<std::size_t>(messages / threads * threads));
  return seconds;
}

// The lines that a crash loses

constexpr int crashMessages = 10000;
constexpr int firstMessages = 10;  // of a process that logs as soon as it starts

[[noreturn]] void logAndAbort(const char* who, const char* folder, int messages, int pauseMilliseconds) {
  const bool isOurs = std::strcmp(who, "ours") == 0;
  const auto subject = isOurs && messages == firstMessages
                           ? std::unique_ptr<Subject>(new Ours(folder, 0, Ours::Start::atOnce))
                           : make(isOurs ? Who::ours : Who::spdlog, folder);
  for (int i = 0; i < messages; ++i) subject->call(i);
  if (pauseMilliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(pauseMilliseconds));
  std::abort();
}

std::size_t linesAfterAbort(const char* program, Who who, int messages, int pauseMilliseconds) {
  const Folder folder;
  const pid_t child = fork();
  if (child == 0) {
    execl(program, program, "--abort", nameOf(who), folder.path().c_str(), std::to_string(messages).c_str(),
          std::to_string(pauseMilliseconds).c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return folder.lines();
}

// Suppressed calls

std::atomic<int> floorLevel{LOG_LEVEL_WARN};

[[gnu::noinline]] void floorLog(const int& number) {
  std::printf("payslip %d of department %s", number, "engineering");
}

void suppressedOurs(benchmark::State& state) {
  ddLogLevel = LOG_LEVEL_WARN;
  int number = 0;
  for (auto _ : state) {
    DDLogVerbose("payslip %d of department %s", number, "engineering");
    benchmark::DoNotOptimize(++number);
  }
}

void suppressedFloor(benchmark::State& state) {
  int number = 0;
  for (auto _ : state) {
    if ((floorLevel.load(std::memory_order_relaxed) & LOG_FLAG_VERBOSE) != 0) [[unlikely]]
      floorLog(number);
    benchmark::DoNotOptimize(++number);
  }
}

void suppressedSpdlog(benchmark::State& state) {
  const Folder folder;
  const auto logger = std::make_shared<spdlog::logger>(
      "suppressed", std::make_shared<spdlog::sinks::basic_file_sink_mt>(folder.path() + "/log.txt"));
  logger->set_level(spdlog::level::warn);
  int number = 0;
  for (auto _ : state) {
    logger->debug("payslip {} of department {}", number, "engineering");
    benchmark::DoNotOptimize(++number);
  }
}

void report(const std::string& name, std::function<double()> measure, benchmark::TimeUnit unit) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [measure](benchmark::State& state) {
                                 for (auto _ : state) state.SetIterationTime(measure());
                               })
      ->Iterations(1)
      ->UseManualTime()
      ->Unit(unit);
}

void registerAll() {
  benchmark::RegisterBenchmark("suppressed log call/ours", suppressedOurs);
  benchmark::RegisterBenchmark("suppressed log call/load and branch", suppressedFloor);
  benchmark::RegisterBenchmark("suppressed log call/spdlog", suppressedSpdlog);
  const struct {
    const char* name;
    std::chrono::nanoseconds interval;
    int groups, count;
  } rhythms[] = {
      {"every 3 us", std::chrono::microseconds(3), 300000, 1},
      {"every 200 us", std::chrono::microseconds(200), 8000, 1},
      {"bursts of 500", std::chrono::milliseconds(5), 300, 500},
  };
  for (const auto& rhythm : rhythms) {
    for (const Who who : everybody) {
      const auto costs = std::make_shared<Percentiles>();
      const std::string subject = std::string("log call, ") + rhythm.name;
      report(
          subject + ", p50/" + nameOf(who),
          [=] {
            *costs = callerCost(who, rhythm.interval, rhythm.groups, rhythm.count);
            return costs->p50;
          },
          benchmark::kNanosecond);
      report(
          subject + ", p99/" + nameOf(who), [=] { return costs->p99; }, benchmark::kNanosecond);
      report(
          subject + ", mean/" + nameOf(who), [=] { return costs->mean; }, benchmark::kNanosecond);
    }
  }
  const struct {
    const char* name;
    int threads;
    std::uint64_t maximumFileSize;
  } runs[] = {
      {"1M lines, 1 thread", 1, 0},
      {"1M lines, 4 threads", 4, 0},
      {"1M lines, 1 thread, rolling at 1 MiB", 1, 1 << 20},
  };
  for (const auto& run : runs) {
    for (const Who who : everybody) {
      report(
          std::string(run.name) + "/" + nameOf(who),
          [=] { return secondsForAll(who, run.threads, 1000000, run.maximumFileSize); }, benchmark::kMillisecond);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 6 && std::strcmp(argv[1], "--abort") == 0) {
    logAndAbort(argv[2], argv[3], std::atoi(argv[4]), std::atoi(argv[5]));
  }
  registerAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  for (const int pause : {0, 20}) {
    for (const Who who : everybody) {
      const std::size_t lines = linesAfterAbort("/proc/self/exe", who, crashMessages, pause);
      std::printf("note: abort() %d ms after %d calls leaves %zu lines (%s)\n", pause, crashMessages, lines,
                  nameOf(who));
      if (who == Who::ours && pause == 20 && lines != crashMessages) fail("lines are lost");
    }
  }
  for (const Who who : everybody) {
    constexpr int processes = 50;
    int whole = 0;
    for (int i = 0; i < processes; ++i) {
      if (linesAfterAbort("/proc/self/exe", who, firstMessages, 3) == firstMessages) ++whole;
    }
    std::printf("note: abort() 3 ms after a process's first %d calls leaves all of them in %d of %d (%s)\n",
                firstMessages, whole, processes, nameOf(who));
  }
}
