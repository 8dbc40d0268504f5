// tests/logging/log_child.cpp - a process that logs and ends in the way that its first argument names. The second
// argument is the folder for its log. DDLogProcess_test.cpp checks the results.
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"
#include "NorvikCore/platform/foundation/NSApplicationTermination.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "tests/support/Sanitizers.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#if defined(NK_TEST_ADDRESS_SANITIZER)
// A forked child abandons the messages that were queued in its parent, on purpose. That is not a leak.
extern "C" NK_EXPORT const char*
__asan_default_options();  // NOLINT(bugprone-reserved-identifier): the sanitizer's name
extern "C" NK_EXPORT const char* __asan_default_options() { return "detect_leaks=0"; }
#endif

namespace {

using namespace norvik;

void say(const NSString& text, bool asynchronous = true) {
  DDLog::log(asynchronous, LOG_LEVEL_VERBOSE, LOG_FLAG_ERROR, 0, "f", "g", 1, Value(), "%@", text);
}

std::string ending;

/// Writes the operations that are called to standard output, and ends the process from within one if requested.
class Talking : public DDAbstractLogger {
  NK_OBJECT(Talking, DDAbstractLogger)
  void logMessage(const DDLogMessage& message) override {
    put("message ", message.logMsg());
    if (message.logMsg() == "exit") std::exit(0);
  }
  void flush() override { put("flush", ""); }

 private:
  static void put(const char* what, const NSString& text) {
    const std::string line = what + text.str() + "\n";
    if (write(STDOUT_FILENO, line.data(), line.size()) < 0) std::abort();
  }
};

/// Runs on the queue that it is given.
class TalkingOn : public Talking {
  NK_OBJECT(TalkingOn, Talking)
  explicit TalkingOn(dispatch_queue_t queue) : queue_(std::move(queue)) {}
  dispatch_queue_t loggerQueue() override { return queue_; }

 private:
  dispatch_queue_t queue_;
};

class Quiet : public DDAbstractLogger {
  NK_OBJECT(Quiet, DDAbstractLogger)
};

/// Writes when it begins and when it ends, and yields in between, so that others could run.
class Slow : public DDAbstractLogger {
  NK_OBJECT(Slow, DDAbstractLogger)
  explicit Slow(const char* name) : name_(name) {}
  void logMessage(const DDLogMessage& message) override {
    std::printf("%s begins %s\n", name_, message.logMsg().str().c_str());
    for (int i = 0; i < 100; ++i) std::this_thread::yield();
    std::printf("%s ends\n", name_);
  }

 private:
  const char* name_;
};

struct LogsInItsDestructor {
  ~LogsInItsDestructor() {
    if (ending == "static") say("from a static destructor");
  }
} logsInItsDestructor;

void addFileLogger(const char* folder) {
  auto logger = DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder)));
  logger->setLogFormatter(nullptr);
  logger->setMaximumFileSize(0);
  DDLog::addLogger(logger);
}

/// Of this process so far.
long processorMicroseconds() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  return (used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1'000'000 + used.ru_utime.tv_usec + used.ru_stime.tv_usec;
}

void waitNanoseconds(std::int64_t nanoseconds) {
  const std::int64_t end = kernel::monotonicNanoseconds() + nanoseconds;
  while (kernel::monotonicNanoseconds() < end) {
    const std::timespec pause{0, std::min<long>(end - kernel::monotonicNanoseconds(), 999'999'999)};
    nanosleep(&pause, nullptr);
  }
}

[[noreturn]] void killOneself() {
  kill(getpid(), SIGKILL);
  for (;;) pause();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  ending = argv[1];
  const bool mayStartThreads = ending != "no-threads" && ending != "fork-without-threads";
  const auto shortage = mayStartThreads ? nullptr : std::make_unique<detail::ThreadStartsFail>();
  if (argc > 2) addFileLogger(argv[2]);
  if (ending ==
      "no-threads") {  // more than may wait, on two threads; a flush; more, which the end of the process writes
    DDLog::addLogger(make<Quiet>());
    std::thread other([] {
      for (int i = 0; i < 1500; ++i) say("from another thread");
    });
    for (int i = 0; i < 1500; ++i) say("line " + NSString(std::to_string(i)));
    other.join();
    say("synchronous", false);
    DDLog::flushLog();
    for (int i = 0; i < 500; ++i) say("at the end");
    return 0;
  }
  if (ending == "fork-without-threads") {
    DDLog::flushLog();  // what is queued at the fork is the parent's, also a logger that is being added
    for (int i = 0; i < 20; ++i) say("parent");
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      for (int i = 0; i < 1500; ++i) say("child");
      DDLog::flushLog();
      std::exit(7);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 7 ? 0 : 1;
  }
  if (ending == "kill") {
    for (int i = 0; i < 20; ++i) say("before");
    say("last", false);
    killOneself();
  }
  if (ending == "abort") {
    for (int i = 0; i < 10000; ++i) say("line");
    waitNanoseconds(250'000'000);  // enough also if the writer gets no processor for a while
    std::abort();
  }
  if (ending == "idle") {  // prints the microseconds of processor time that a second without calls takes
    for (int i = 0; i < 1000; ++i) say("busy before");
    DDLog::flushLog();
    waitNanoseconds(300'000'000);
    const long before = processorMicroseconds();
    waitNanoseconds(1'000'000'000);
    std::printf("%ld\n", processorMicroseconds() - before);
    return 0;
  }
  if (ending == "one-processor") {
    const kernel::ProcessorCountOverride one(1);
    for (const char* name : {"a", "b", "c"}) DDLog::addLogger(make<Slow>(name));
    say("queued");
    say("now", false);
    return 0;
  }
  if (ending == "append") {
    for (int i = 0; i < 2000; ++i) say("a line of the process");
    DDLog::flushLog();
    return 0;
  }
  if (ending == "return-with-a-logger-on-the-main-queue") {
    DDLog::addLogger(make<TalkingOn>(dispatch_get_main_queue()));
    for (int i = 0; i < 1500; ++i) say("queued");
    return 0;
  }
  const dispatch_queue_t shared = dispatch_queue_create("shared");
  if (ending == "exit-on-a-loggers-target") {
    DDLog::addLogger(make<TalkingOn>(dispatch_queue_create("own", DISPATCH_QUEUE_SERIAL, shared)));
    say("before", false);
    dispatch_sync(shared, [] {
      say("queued");
      std::exit(0);
    });
  }
  if (ending == "fork-with-queues-of-one-target") {
    for (const char* name : {"a", "b"}) {
      DDLog::addLogger(make<TalkingOn>(dispatch_queue_create(name, DISPATCH_QUEUE_SERIAL, shared)));
    }
    say("before", false);
    const pid_t child = fork();
    if (child == 0) _exit(0);
    int status = 0;
    waitpid(child, &status, 0);
    say("after", false);
    return status;
  }
  DDLog::addLogger(make<Talking>());
  if (ending == "return" || ending == "static") {
    say("queued");
    return 0;
  }
  if (ending == "posted") {  // the application posts early, and logs afterwards
    NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification);
    say("after the notification");
    return 0;
  }
  if (ending == "exit-in-logger") {
    say("exit");
    for (;;) pause();
  }
  if (ending == "exit-in-logger-synchronously") {
    say("exit", false);
  }
  if (ending == "exit-in-one-of-two-loggers") {
    DDLog::addLogger(make<Quiet>());
    say("exit");
    for (;;) pause();
  }
  if (ending == "exit-on-logging-queue") {
    dispatch_async(DDLog::loggingQueue(), [] { std::exit(0); });
    for (;;) pause();
  }
  if (ending == "exit-in-thread") {
    std::thread([] {
      say("queued");
      std::exit(0);
    }).join();
  }
  if (ending == "fork") {
    say("parent");
    std::atomic<bool> done = false;
    std::thread busy([&] {
      while (!done) say("meanwhile");
    });
    int bad = 0;
    for (int i = 0; i < 50; ++i) {
      std::fflush(nullptr);
      const pid_t child = fork();
      if (child == 0) {
        alarm(20);
        for (int line = 0; line < 1500; ++line) say("child");
        say("child", false);
        std::exit(7);
      }
      int status = 0;
      waitpid(child, &status, 0);
      if (!WIFEXITED(status) || WEXITSTATUS(status) != 7) {
        std::fprintf(stderr, "the child of fork %d ended with status %#x\n", i, static_cast<unsigned>(status));
        ++bad;
      }
    }
    done = true;
    busy.join();
    return bad;
  }
  return 2;
}
