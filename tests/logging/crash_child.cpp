// tests/logging/crash_child.cpp - a process that logs and then crashes in the way that its first argument names. The
// second argument is the folder of its log, the third the number of threads that log. DDCrashHandler_test.cpp checks
// the results.
#include "NorvikCore/logging/DDCrashHandler.h"
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/database/DDSQLiteLogger.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/QuietFork.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// While this is set no thread can allocate, as if the crashed thread held the lock of the heap.
static std::atomic<bool> memoryHangs = false;

#if !defined(NK_TEST_ADDRESS_SANITIZER) && !defined(NK_TEST_THREAD_SANITIZER)
extern "C" void* __libc_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier): the C library's name
extern "C" NK_EXPORT void* malloc(std::size_t size) {
  while (memoryHangs) pause();
  return __libc_malloc(size);
}
#endif

namespace pay {

using namespace norvik;

std::string folder;
volatile int zero = 0, sink = 0;
void (*volatile noCode)() = nullptr;

/// The frames that the report must name.
NK_EXPORT __attribute__((noinline)) void crashHere(const std::string& how) {
  if (how == "segv") *reinterpret_cast<volatile int*>(std::uintptr_t{16}) = 1;  // the line that addr2line is to find
  if (how == "fpe") sink = 100 / zero;
  if (how == "ill") __builtin_trap();
  if (how == "abort") std::abort();
  if (how == "bus") {
    const std::string path = folder + "/mapped";
    std::ofstream(path) << "x";
    std::FILE* const file = std::fopen(path.c_str(), "r+");
    char* const memory = static_cast<char*>(mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fileno(file), 0));
    if (truncate(path.c_str(), 0) == 0) memory[0] = 'y';
  }
  sink = 2;
}

NK_EXPORT __attribute__((noinline)) void callsWhatCrashes(const std::string& how) {
  crashHere(how);
  sink = 3;
}

NK_EXPORT __attribute__((noinline)) int overflow(int depth) {
  volatile char frame[4096];
  frame[depth % 4096] = 1;
  return zero != 0 ? frame[0] : overflow(depth + 1) + frame[0];
}

void say(int number) {
  DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "f", "g", 1, nullptr, "message %d of %s", number, "10000");
}

/// Logs messages 0 to count - 1 on `threads` threads. The last thread to finish calls `then`.
template <class Then>
void sayAll(int count, int threads, const Then& then) {
  if (threads <= 1) {
    for (int i = 0; i < count; ++i) say(i);
    return then();
  }
  std::vector<std::thread> all;
  std::atomic<int> done = 0;
  for (int t = 0; t < threads; ++t) {
    all.emplace_back([&, t] {
      for (int i = t; i < count; i += threads) say(i);
      if (++done == threads) then();
    });
  }
  for (std::thread& one : all) one.join();
}
void sayAll(int count, int threads) {
  sayAll(count, threads, [] {});
}

class Crashing : public DDAbstractLogger {
  NK_OBJECT(Crashing, DDAbstractLogger)
  explicit Crashing(bool takesRuns) : takesRuns_(takesRuns) {}
  bool takesRuns() const noexcept override { return takesRuns_; }
  void logMessage(const DDLogMessage& message) override {
    if (message.logMsg().hasPrefix("message 5000 ")) crash();
  }
  std::size_t logMessages(const DDLogRun& run) override {
    for (const DDLogEntry& entry : run) {
      if (entry.text().hasPrefix("message 5000 ")) crash();
    }
    return run.count();
  }
  static std::atomic<bool> hangsMemory;

 private:
  static void crash() {
    const std::string how = "segv";
    memoryHangs = hangsMemory.load();
    crashHere(how);
  }
  const bool takesRuns_;
};

std::atomic<bool> Crashing::hangsMemory = false;

class Overflowing : public Crashing {
  NK_OBJECT(Overflowing, Crashing)
  Overflowing() : Crashing(true) {}
  std::size_t logMessages(const DDLogRun& run) override {
    for (const DDLogEntry& entry : run) {
      if (entry.text().hasPrefix("message 500 ")) sink = overflow(0);
    }
    return run.count();
  }
};

/// Waits for the lock that the crashed thread holds.
class Locking : public DDAbstractLogger {
  NK_OBJECT(Locking, DDAbstractLogger)
  bool takesRuns() const noexcept override { return true; }
  std::size_t logMessages(const DDLogRun& run) override {
    isWaiting = true;
    const std::lock_guard lock(mutex);
    return run.count();
  }
  std::mutex mutex;
  std::atomic<bool> isWaiting = false;
};

constexpr const char* reportPrefix = "*** ";

/// Never returns from the first message that begins with the prefix.
class Stuck : public DDAbstractLogger {
  NK_OBJECT(Stuck, DDAbstractLogger)
  Stuck(const char* prefix, bool takesRuns) : prefix_(prefix), takesRuns_(takesRuns) {}
  bool takesRuns() const noexcept override { return takesRuns_; }
  void logMessage(const DDLogMessage& message) override {
    while (message.logMsg().hasPrefix(prefix_)) pause();
  }
  std::size_t logMessages(const DDLogRun& run) override {
    for (const DDLogEntry& entry : run) {
      while (entry.text().hasPrefix(prefix_)) pause();
    }
    return run.count();
  }

 private:
  const char* const prefix_;
  const bool takesRuns_;
};

class StuckFormatter : public DDLogFormatter {
  NK_OBJECT(StuckFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    while (message.logMsg().hasPrefix(reportPrefix)) pause();
    return message.logMsg();
  }
};

class Wordless : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return nullptr; }
};

void addFileLogger(const Ref<DDLogFormatter>& formatter) {
  auto logger = DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder)));
  logger->setLogFormatter(formatter);
  logger->setMaximumFileSize(0);
  DDLog::addLogger(logger);
}

void announce(const char* word) {
  std::printf("%s\n", word);
  std::fflush(stdout);
}

extern "C" void former(int number, siginfo_t* info, void*) {
  char text[64];
  const int length = std::snprintf(text, sizeof text, "former %d at %p\n", number, info->si_addr);
  if (write(STDOUT_FILENO, text, static_cast<std::size_t>(length)) != length) _exit(8);
  _exit(7);
}

int childOfFork(bool logs) {
  sayAll(1000, 1);
  DDLog::flushLog();
  const pid_t child = fork();
  if (child == 0) {
    if (logs) sayAll(1000, 1);
    crashHere("segv");
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

NK_EXPORT int run(const std::string& how, int threads);
int run(const std::string& how, int threads) {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  if (how == "former") {
    struct sigaction own {};
    own.sa_sigaction = &former;
    own.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &own, nullptr);
  }
  if (how == "terminate-exit") std::set_terminate([] { _exit(3); });
  const Ref<DDLogFormatter> stuck = how == "stuck-formatter" ? make<StuckFormatter>() : nullptr;
  if (how != "no-logger") addFileLogger(stuck);
  if (how == "database") DDLog::addLogger(DDSQLiteLogger::initWithPath(NSString(folder + "/database")));
  if (how == "crash-in-logger") DDLog::addLogger(make<Crashing>(false));
  Crashing::hangsMemory = how == "crash-without-memory";
  if (how == "crash-in-runs" || how == "crash-without-memory") DDLog::addLogger(make<Crashing>(true));
  if (how == "overflow-in-logger") DDLog::addLogger(make<Overflowing>());
  if (how == "stuck-logger") DDLog::addLogger(make<Stuck>(reportPrefix, true));
  if (how == "stuck-midway") DDLog::addLogger(make<Stuck>("*** #1 ", false));
  const auto locking = make<Locking>();
  if (how == "lock") DDLog::addLogger(locking);
  DDCrashHandler::install();
  if (how == "fork-logs") return childOfFork(true);
  if (how == "fork-silent") return childOfFork(false);
  if (how == "lock") {
    locking->mutex.lock();
    sayAll(900, 1);
    while (!locking->isWaiting) sched_yield();
    announce("crashing");
    crashHere("segv");
  }
  if (how.starts_with("crash-") || how == "overflow-in-logger") {
    announce("crashing");
    sayAll(how == "overflow-in-logger" ? 900 : 5900, 1);
    for (;;) pause();
  }
  if (how == "values-in-logger") {
    DDLog::addLogger(make<Crashing>(false));
    DDLog::flushLog();
    dispatch_suspend(DDLog::loggingQueue());
    say(5000);
    DDLog::log(true, 31, 1, 0, "f", "g", 1, nullptr, "paid %@", Decimal(1234));
    dispatch_resume(DDLog::loggingQueue());
    for (;;) pause();
  }
  if (how == "two") {
    sayAll(10'000, threads);
    std::atomic<int> ready = 0;
    const auto crash = [&] {
      ++ready;
      while (ready < 2) sched_yield();
      crashHere("segv");
    };
    std::thread one(crash), other(crash);
    one.join();
    other.join();
  }
  if (how == "term") {
    sayAll(100, 1);
    DDLog::flushLog();
    raise(SIGTERM);
  }
  if (how.starts_with("stuck-")) {
    sayAll(900, 1);
    callsWhatCrashes("segv");
  }
  if (how == "quiet") {  // the writer is asleep at the crash
    sayAll(100, 1);
    DDLog::flushLog();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    crashHere("segv");
  }
  const bool isOtherwise = how == "former" || how == "no-logger" || how == "database";
  if (isOtherwise || how == "segv" || how == "bus" || how == "fpe" || how == "ill" || how == "abort") {
    sayAll(10'000, threads, [&] { callsWhatCrashes(isOtherwise ? "segv" : how); });
    return 0;
  }
  sayAll(10'000, threads);
  if (how == "overflow") sink = overflow(0);
  if (how == "overflow-on-thread") {
    std::thread([] {
      say(10'000);
      sink = overflow(0);
    }).join();
  }
  if (how == "overflow-on-queue") {
    dispatch_sync(dispatch_get_global_queue(), [] {});
    dispatch_async(dispatch_queue_create("overflowing"), [] { sink = overflow(0); });
    for (;;) pause();
  }
  if (how == "without-memory") {
    const std::string segv = "segv";
    memoryHangs = true;
    callsWhatCrashes(segv);
  }
  if (how == "heap") {
    char* volatile memory = static_cast<char*>(std::calloc(1, 64));  // zeros: the fake block has no size and no arena
    memory = memory + 8;
    std::free(memory);  // NOLINT(clang-analyzer-unix.Malloc): the C library aborts because of it
  }
  if (how == "bad-stack") {
#if defined(__x86_64__)
    __asm__ __volatile__("movq $64, %%rsp\n\tud2" ::: "memory");
#endif
  }
  if (how == "sent") {  // by another process
    const pid_t self = getpid();
    int go[2];
    char byte = 0;
    if (pipe(go) != 0) return 2;
    if (fork() == 0) _exit(read(go[0], &byte, 1) == 1 ? kill(self, SIGSEGV) : 1);
    if (write(go[1], &byte, 1) != 1) return 2;  // not within fork(), whose locks the handler would find held
    for (;;) pause();
  }
  if (how == "null-call") noCode();
  if (how == "bad-argument") {
    DDLog::log(true, 31, 1, 0, "f", "g", 1, nullptr, "%s", reinterpret_cast<const char*>(std::uintptr_t{16}));
  }
  if (how == "terminate" || how == "terminate-exit") throw std::runtime_error("no bank account\nfor Zoë");
  if (how == "terminate-nsexception") throw NSException("NoTariff", "the bank has not said it");
  if (how == "terminate-without-text") throw Wordless();
  if (how == "terminate-int") throw 42;
  if (how == "terminate-on-thread") std::thread([] { throw std::logic_error("on a thread"); }).join();
  if (how == "terminate-plain") std::terminate();
  return 0;
}

}  // namespace pay

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  pay::folder = argv[2];
  return pay::run(argv[1], std::atoi(argv[3]));
}
