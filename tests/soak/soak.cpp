// tests/soak/soak.cpp - runs everything at once for the given time, and checks every answer.
//
//   soak SECONDS [--leak BYTES]      prints what was done, and ends with "nothing wrong" or "something was wrong"
//
// Three threads log, observe, bind, dispatch, query, and use preferences and cookies (SoakWork.h), each in at most
// fifty rounds a second. Meanwhile the main thread rolls log files and forks children, which do part of the same work.
// The loggers are: a file of small size, all of whose files are kept; another of which the newest are kept; the
// console, which is a pipe that is read; SQLite; the system log, which is a socket that is read. At the end each line
// must be in each log once, except lines that the system log counted as lost, and the resident memory must not have
// grown (ResidentMemory.h).
//
// Under the address sanitizer the threads stop for each fork: see tests/support/QuietFork.h.
//
// --leak keeps that many more bytes in each round, to show that growth is detected. Ten minutes of log take half a
// gigabyte in the temporary folder.
#include "NorvikCore/logging/DDASLLogger.h"
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/logging/DDTTYLogger.h"
#include "NorvikCore/logging/database/DDSQLiteLogger.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/kernel/SyslogClient.h"
#include "tests/soak/ResidentMemory.h"
#include "tests/soak/SoakLines.h"
#include "tests/soak/SoakWork.h"
#include "tests/support/LogFolder.h"
#include "tests/support/QuietFork.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <poll.h>
#include <sqlite3.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#ifdef NK_TEST_ADDRESS_SANITIZER
#include <sanitizer/common_interface_defs.h>

/// The sanitizer keeps freed memory for a while, by default up to a quarter of a gigabyte, which would count as growth.
/// The sanitizer is a shared library, and finds this function only if it is visible.
// NOLINTNEXTLINE(bugprone-reserved-identifier): a given name
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=1:thread_local_quarantine_size_kb=16"; }
#endif

namespace norvik::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int workers = 3, linesOfRound = 10, linesOfChild = 40, firstChild = 100;
constexpr auto roundPeriod = milliseconds(20), tickPeriod = milliseconds(50);
constexpr int ticksOfRoll = 20, ticksOfChild = 10;
constexpr std::uint64_t keptFiles = 3;
constexpr std::size_t fewestSamples = 8;
constexpr unsigned longestChild = 120;  // seconds

/// Shared with the children.
struct Counts {
  std::atomic<std::uint64_t> childLinesInSystemLog;  // of the running child
  std::atomic<std::uint64_t> lostByChildren;         // lines that the system log did not take
};

void log(int source, int number) {
  constexpr std::array flags{LOG_FLAG_ERROR, LOG_FLAG_WARN, LOG_FLAG_INFO, LOG_FLAG_DEBUG, LOG_FLAG_VERBOSE};
  const int flag = flags[static_cast<std::size_t>(number) % flags.size()];
  DDLog::log(number % 50 != 49, LOG_LEVEL_VERBOSE, flag, 0, __FILE__, __func__, __LINE__, Value(), "%@",
             NSString(soakText(source, number)));
}

/// Lets threads begin their rounds, or none.
class Gate {
 public:
  void enter() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !closed_; });
    ++inside_;
  }
  void leave() {
    const std::lock_guard lock(mutex_);
    --inside_;
    changed_.notify_all();
  }
  /// Returns when no thread is inside.
  void close() {
    std::unique_lock lock(mutex_);
    closed_ = true;
    changed_.wait(lock, [this] { return inside_ == 0; });
  }
  void open() {
    const std::lock_guard lock(mutex_);
    closed_ = false;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool closed_ = false;
  int inside_ = 0;
};

/// Makes standard error a pipe while this object exists; its lines are read until then.
class ConsolePipe {
 public:
  explicit ConsolePipe(ArrivingLines& lines) : lines_(lines), original_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 10)) {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) soakFailed("no pipe");
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    output_ = ends[0];
    keepReportDescriptor(original_);
#ifdef NK_TEST_ADDRESS_SANITIZER
    __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(original_)));
#endif
    reader_ = std::thread([this] { read(); });
  }
  ConsolePipe(const ConsolePipe&) = delete;
  ConsolePipe& operator=(const ConsolePipe&) = delete;
  ~ConsolePipe() { finish(); }

  /// Call it when nothing more is written. Returns when every line was read.
  void finish() {
    if (!reader_.joinable()) return;
    dup2(original_, STDERR_FILENO);
    reader_.join();
    close(output_);
  }

 private:
  void read() {
    std::string text;
    std::array<char, 65536> bytes;
    for (ssize_t count; (count = ::read(output_, bytes.data(), bytes.size())) > 0;) {
      text.append(bytes.data(), static_cast<std::size_t>(count));
      std::size_t at = 0;
      for (std::size_t end; (end = text.find('\n', at)) != text.npos; at = end + 1) {
        const std::string wrong = lines_.take(std::string_view(text).substr(at, end - at));
        if (!wrong.empty()) soakFailed("console: " + wrong);
      }
      text.erase(0, at);
    }
    expect(text.empty(), "console: half a line at the end: " + text);
  }

  ArrivingLines& lines_;
  const int original_;
  int output_ = -1;
  std::thread reader_;
};

/// The system's log service: a socket for datagrams.
class SystemLogSocket {
 public:
  SystemLogSocket(const std::string& path, ArrivingLines& lines, Counts& counts)
      : lines_(lines), counts_(counts), socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) soakFailed("no socket");
    reader_ = std::thread([this] { read(); });
  }
  SystemLogSocket(const SystemLogSocket&) = delete;
  SystemLogSocket& operator=(const SystemLogSocket&) = delete;
  ~SystemLogSocket() { finish(); }

  void finish() {
    if (!reader_.joinable()) return;
    shutdown(socket_, SHUT_RDWR);
    reader_.join();
    close(socket_);
  }

 private:
  void read() {
    std::array<char, 65536> bytes;
    for (ssize_t count; (count = recv(socket_, bytes.data(), bytes.size(), 0)) > 0;) {
      const std::string wrong = lines_.take({bytes.data(), static_cast<std::size_t>(count)});
      if (!wrong.empty()) {
        soakFailed("system log: " + wrong);
      } else if (lines_.last().source >= firstChild) {
        ++counts_.childLinesInSystemLog;
      }
    }
  }

  ArrivingLines& lines_;
  Counts& counts_;
  const int socket_;
  std::thread reader_;
};

/// Flushes until `isDone`, or until twenty seconds have passed, after which the system log must have each line or have
/// lost it.
void flushUntil(const std::function<bool()>& isDone) {
  const auto end = steady_clock::now() + std::chrono::seconds(20);
  do {
    DDLog::flushLog();
    std::this_thread::sleep_for(milliseconds(1));
  } while (!isDone() && steady_clock::now() < end);
}

class Soak {
 public:
  Soak(int seconds, std::size_t leak)
      : seconds_(seconds), leak_(leak), memory_(seconds, static_cast<std::size_t>(seconds) * 20 + 20) {
    counts_ =
        static_cast<Counts*>(mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    if (counts_ == MAP_FAILED) throw std::bad_alloc();
  }
  Soak(const Soak&) = delete;
  Soak& operator=(const Soak&) = delete;
  ~Soak() { munmap(counts_, sizeof(Counts)); }

  void run() {
    ConsolePipe console(consoleLines_);
    const kernel::SyslogPlaces places(folder_.path("journal"), folder_.path("log"));
    SystemLogSocket systemLog(folder_.path("log"), systemLogLines_, *counts_);
    addLoggers();
    work();
    work_.checkTotals();

    const std::uint64_t sent = linesSent();
    const auto lost = [this] { return DDASLLogger::sharedInstance()->lostMessages() + counts_->lostByChildren; };
    flushUntil([&] { return systemLogLines_.count() + lost() == sent; });
    lostBySystemLog_ = lost();
    expect(systemLogLines_.count() + lostBySystemLog_ == sent,
           "system log: " + std::to_string(systemLogLines_.count()) + " lines arrived and " +
               std::to_string(lostBySystemLog_) + " are lost, of " + std::to_string(sent));
    DDLog::removeAllLoggers();
    DDLog::flushLog();
    console.finish();
    systemLog.finish();
    expect(consoleLines_.count() == sent,
           "console: " + std::to_string(consoleLines_.count()) + " lines of " + std::to_string(sent));
    checkFiles();
    checkDatabase();
    expect(memory_.count() >= fewestSamples && memory_.isFlat(), "the resident memory has grown");
  }

  void report() const {
    std::uint64_t rounds = 0;
    for (const auto& done : rounds_) rounds += static_cast<std::uint64_t>(done);
    const auto megabytes = [](std::uint64_t bytes) { return static_cast<double>(bytes) / (1 << 20); };
    std::printf(
        "%d s: %llu rounds, %llu lines in each log, %d children, %zu files, %llu lines lost by the system log\n",
        seconds_, static_cast<unsigned long long>(rounds), static_cast<unsigned long long>(linesSent()), children_,
        files_, static_cast<unsigned long long>(lostBySystemLog_));
    std::printf("resident memory: %.1f MiB in the second quarter, %.1f MiB in the last, %.1f MiB more allowed\n",
                megabytes(memory_.secondQuarter()), megabytes(memory_.lastQuarter()), megabytes(memory_.bound()));
    std::printf("%s\n", hasSoakFailed() ? "something was wrong" : "nothing wrong");
  }

 private:
  void addLoggers() {
    const auto file = [this](const char* folder, std::uint64_t files) {
      const auto manager = DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder_.path(folder)));
      manager->setMaximumNumberOfLogFiles(files);
      const auto logger = DDFileLogger::initWithLogFileManager(manager);
      logger->setMaximumFileSize(256 << 10);
      DDLog::addLogger(logger);
      return logger;
    };
    fileLoggers_ = {file("all", 0), file("newest", keptFiles)};
    sqlite_ = DDSQLiteLogger::initWithPath(NSString(folder_.path("log.db")));
    sqlite_->setSaveThreshold(200);
    DDLog::addLogger(sqlite_);
    DDLog::addLogger(DDTTYLogger::sharedInstance());
    DDLog::addLogger(DDASLLogger::sharedInstance());
  }

  /// Runs for the given time; returns when the threads are done.
  void work() {
    const auto end = steady_clock::now() + std::chrono::seconds(seconds_);
    std::vector<std::thread> threads;
    for (int worker = 0; worker < workers; ++worker) {
      threads.emplace_back([this, worker, end] { runWorker(worker, end); });
    }
    auto next = steady_clock::now();
    for (int tick = 1; steady_clock::now() < end; ++tick) {
      memory_.sample();
      if (tick % ticksOfRoll == 0) {
        for (const auto& logger : fileLoggers_) logger->rollLogFile();
      }
      if (tick % ticksOfChild == 0) runChild();
      dispatch_main_queue_drain();
      next = std::max(next + tickPeriod, steady_clock::now());
      std::this_thread::sleep_until(next);
    }
    for (std::thread& thread : threads) thread.join();
  }

  void runWorker(int worker, steady_clock::time_point end) {
    int& rounds = rounds_[static_cast<std::size_t>(worker)];
    auto next = steady_clock::now();
    for (; steady_clock::now() < end; ++rounds) {
      gate_.enter();
      for (int line = 0; line < linesOfRound; ++line) log(worker, rounds * linesOfRound + line);
      work_.round(worker, rounds);
      if (leak_ != 0) leak();
      gate_.leave();
      next = std::max(next + roundPeriod, steady_clock::now());
      std::this_thread::sleep_until(next);
    }
  }

  void leak() {
    const std::lock_guard lock(leakedMutex_);
    leaked_.emplace_back(leak_, 'x');
  }

  void runChild() {
    const int child = children_++;
    counts_->childLinesInSystemLog = 0;
#ifdef NK_TEST_ADDRESS_SANITIZER
    gate_.close();
    DDLog::flushLog();
#endif
    quietBeforeFork();
    const pid_t id = fork();
    if (id == 0) beChild(child);
#ifdef NK_TEST_ADDRESS_SANITIZER
    gate_.open();
#endif
    int status = -1;
    if (id < 0 || waitpid(id, &status, 0) != id || status != 0) {
      return soakFailed("child " + std::to_string(child) + " ended with status " + std::to_string(status));
    }
    work_.checkTracesOfChild(firstChild + child, child);
  }

  [[noreturn]] void beChild(int child) {
    alarm(longestChild);
    const std::uint64_t lostBefore = DDASLLogger::sharedInstance()->lostMessages();
    const std::uint64_t unsavedBefore = sqlite_->lostEntryCount();
    for (int line = 0; line < linesOfChild; ++line) log(firstChild + child, line);
    work_.roundOfChild(firstChild + child, child);
    if (child % 4 == 0) fileLoggers_[0]->rollLogFile();
    const auto lost = [&] { return DDASLLogger::sharedInstance()->lostMessages() - lostBefore; };
    flushUntil([&] { return counts_->childLinesInSystemLog + lost() == linesOfChild; });
    counts_->lostByChildren += lost();
    expect(counts_->childLinesInSystemLog + lost() == linesOfChild, "a child's lines in the system log");
    expect(sqlite_->lostEntryCount() == unsavedBefore, "a child's lines in the database");
    _exit(hasSoakFailed() ? 1 : 0);
  }

  [[nodiscard]] std::uint64_t linesSent() const {
    std::uint64_t lines = static_cast<std::uint64_t>(children_) * linesOfChild;
    for (const int done : rounds_) lines += static_cast<std::uint64_t>(done) * linesOfRound;
    return lines;
  }

  void expectAll(const char* logger, const CompleteLines& lines) const {
    const auto check = [&](int source, int sent) {
      const std::uint64_t missing = lines.missing(source, sent);
      expect(missing == 0, std::string(logger) + ": " + std::to_string(missing) + " lines of " + std::to_string(sent) +
                               " of source " + std::to_string(source) + " are missing");
    };
    for (int worker = 0; worker < workers; ++worker) {
      check(worker, rounds_[static_cast<std::size_t>(worker)] * linesOfRound);
    }
    for (int child = 0; child < children_; ++child) check(firstChild + child, linesOfChild);
  }

  void checkFiles() {
    CompleteLines lines;
    const std::vector<std::string> files = filesIn(folder_.path("all"));
    files_ = files.size();
    for (const std::string& file : files) {
      for (const std::string& line : linesOf(file)) {
        const std::string wrong = lines.take(line);
        if (!wrong.empty()) soakFailed("file: " + wrong);
      }
    }
    expectAll("file", lines);

    CompleteLines newest;
    const std::vector<std::string> kept = filesIn(folder_.path("newest"));
    expect(!kept.empty() && kept.size() <= keptFiles + 1, std::to_string(kept.size()) + " files kept");
    for (const std::string& file : kept) {
      for (const std::string& line : linesOf(file)) {
        const std::string wrong = newest.take(line);
        if (!wrong.empty()) soakFailed("newest files: " + wrong);
      }
    }
  }

  void checkDatabase() {
    expect(sqlite_->lostEntryCount() == 0, "the database has lost entries");
    CompleteLines lines;
    sqlite3* database = nullptr;
    const auto take = [](void* all, int, char** columns, char**) {
      const std::string wrong = static_cast<CompleteLines*>(all)->take(columns[0] ? columns[0] : "NULL");
      if (!wrong.empty()) soakFailed("database: " + wrong);
      return 0;
    };
    const bool isRead =
        sqlite3_open_v2(folder_.path("log.db").c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
        sqlite3_exec(database, "SELECT text FROM entry", take, &lines, nullptr) == SQLITE_OK;
    sqlite3_close(database);
    expect(isRead, "the database cannot be read");
    expectAll("database", lines);
  }

  const int seconds_;
  const std::size_t leak_;
  const TemporaryFolder folder_;
  SoakWork work_{folder_.path()};
  Counts* counts_;
  ArrivingLines consoleLines_, systemLogLines_;
  std::vector<Ref<DDFileLogger>> fileLoggers_;
  Ref<DDSQLiteLogger> sqlite_;
  Gate gate_;
  ResidentMemory memory_;

  std::array<int, workers> rounds_{};
  int children_ = 0;
  std::size_t files_ = 0;
  std::uint64_t lostBySystemLog_ = 0;
  std::mutex leakedMutex_;
  std::vector<std::string> leaked_;
};

/// A whole number from 1 to `most`, or 0 for any other text.
int numberIn(const char* text, int most) {
  int number = 0;
  const char* const end = text + std::strlen(text);
  const auto [at, error] = std::from_chars(text, end, number);
  return error == std::errc() && at == end && number >= 1 && number <= most ? number : 0;
}

}  // namespace
}  // namespace norvik::test

int main(int argc, char** argv) {
  using namespace norvik::test;
  const bool leaks = argc == 4 && std::string_view(argv[2]) == "--leak";
  const int seconds = argc >= 2 ? numberIn(argv[1], 24 * 60 * 60) : 0;
  const int leak = leaks ? numberIn(argv[3], 1 << 30) : 0;
  if (seconds == 0 || (argc != 2 && leak == 0)) {
    std::fprintf(stderr, "usage: %s SECONDS [--leak BYTES]\n", argv[0]);
    return 2;
  }
  // Without colours, which would become part of the console's lines.
  unsetenv("TERM");
  unsetenv("XcodeColors");
  {
    Soak soak(seconds, static_cast<std::size_t>(leak));
    soak.run();
    soak.report();
  }
  return hasSoakFailed() ? 1 : 0;
}
