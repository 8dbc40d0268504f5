// Many threads log while loggers, settings and files change.
#include "NorvikCore/logging/DDFileLogger.h"
#include "NorvikCore/logging/DDLogFileFormatterDefault.h"
#include "tests/support/LogFolder.h"
#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <charconv>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int messagesInAll = 80'000;
#else
constexpr int messagesInAll = 300'000;
#endif

namespace norvik {
namespace {

using test::filesIn;
using test::RecordingManager;
using test::TemporaryFolder;

constexpr int threads = 8, messagesEach = messagesInAll / threads;
constexpr std::array flags{LOG_FLAG_ERROR, LOG_FLAG_WARN, LOG_FLAG_INFO, LOG_FLAG_DEBUG, LOG_FLAG_VERBOSE};

int flagOf(int thread, int number) { return flags[static_cast<std::size_t>(thread + number) % flags.size()]; }

/// The "t n" of a message of the stress, which follows the last '>' of the line.
struct Parsed {
  int thread = -1, number = -1;
  bool operator==(const Parsed&) const = default;
};
Parsed parse(std::string_view line) {
  const std::size_t begin = line.rfind('>') + 1, blank = line.find(' ', begin);
  Parsed parsed;
  std::from_chars(line.data() + begin, line.data() + blank, parsed.thread);
  std::from_chars(line.data() + blank + 1, line.data() + line.size(), parsed.number);
  return parsed;
}

/// Checks that each thread's admitted messages come once and in order.
class Sequence {
 public:
  explicit Sequence(int level) : level_(level) {}
  void take(Parsed parsed) {
    ASSERT_GE(parsed.thread, 0);
    ASSERT_LT(parsed.thread, threads);
    int& next = next_[static_cast<std::size_t>(parsed.thread)];
    while (next < messagesEach && flagOf(parsed.thread, next) > level_) ++next;
    ASSERT_EQ(parsed.number, next) << "thread " << parsed.thread;
    ++next;
    if (flagOf(parsed.thread, parsed.number) <= LOG_LEVEL_WARN) warnings_.push_back(parsed);
  }
  /// The messages of all threads that every logger of the stress admits, in the order of their arrival.
  [[nodiscard]] const std::vector<Parsed>& warnings() const { return warnings_; }

  void expectComplete() {
    for (int t = 0; t < threads; ++t) {
      int& next = next_[static_cast<std::size_t>(t)];
      while (next < messagesEach && flagOf(t, next) > level_) ++next;
      EXPECT_EQ(next, messagesEach) << "thread " << t;
    }
  }

 private:
  int level_;
  std::array<int, threads> next_{};
  std::vector<Parsed> warnings_;
};

class CheckingLogger : public DDAbstractLogger {
  NK_OBJECT(CheckingLogger, DDAbstractLogger)
  explicit CheckingLogger(int level) : sequence(level) {}
  void logMessage(const DDLogMessage& message) override {
    const auto text = formatter() ? formatter()->formatLogMessage(message) : message.logMsg();
    if (!::testing::Test::HasFatalFailure()) sequence.take(parse(text->view()));
  }
  Sequence sequence;
};

class PrefixFormatter : public DDLogFormatter {
  NK_OBJECT(PrefixFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    return "prefix >" + message.logMsg();
  }
};

class ComingAndGoing : public DDAbstractLogger {
  NK_OBJECT(ComingAndGoing, DDAbstractLogger)
  void logMessage(const DDLogMessage&) override { ++messages; }
  std::atomic<int> messages = 0;
};

using DDLogStress = test::CleanDDLog;

TEST_F(DDLogStress, EachAdmittedMessageArrivesOnceInTheOrderOfItsQueueing) {
  const TemporaryFolder folder;
  const auto manager = make<RecordingManager>(folder.path());
  manager->setMaximumNumberOfLogFiles(0);
  const auto file = DDFileLogger::initWithLogFileManager(manager);
  const auto warnings = make<CheckingLogger>(LOG_LEVEL_WARN), info = make<CheckingLogger>(LOG_LEVEL_INFO);
  DDLog::addLogger(file);
  DDLog::addLogger(warnings, LOG_LEVEL_WARN);
  DDLog::addLogger(info, LOG_LEVEL_INFO);

  std::atomic<int> finished = 0;
  std::vector<std::thread> callers;
  for (int t = 0; t < threads; ++t) {
    callers.emplace_back([t, &finished] {
      for (int i = 0; i < messagesEach; ++i) {
        DDLog::log(i % 1009 != 0, 31, flagOf(t, i), 0, "f", "g", 1, Value(), "%d %d", t, i);
      }
      ++finished;
    });
  }
  // Meanwhile a logger is added and removed, the file rolls, settings change, and two loggers change their formatters.
  const auto guest = make<ComingAndGoing>();
  const auto prefix = make<PrefixFormatter>();
  const auto usual = file->logFormatter();
  for (int round = 0; finished < threads; ++round) {
    DDLog::addLogger(guest, static_cast<std::uint32_t>(round % 32));
    info->setLogFormatter(round % 2 == 0 ? prefix : nullptr);
    file->setLogFormatter(round % 3 == 0 ? Ref<DDLogFormatter>(prefix) : round % 3 == 1 ? nullptr : usual);
    file->setMaximumFileSize(round % 5 == 0 ? 10000 : 1 << 20);
    if (round % 7 == 0) file->rollLogFile();
    DDLog::removeLogger(guest);
    if (round % 11 == 0) DDLog::flushLog();
    EXPECT_EQ(file->rollingFrequency(), 86400);
  }
  for (std::thread& caller : callers) caller.join();
  DDLog::removeAllLoggers();
  DDLog::flushLog();
  for (const Ref<DDAbstractLogger>& logger : {Ref<DDAbstractLogger>(file), Ref<DDAbstractLogger>(warnings),
                                              Ref<DDAbstractLogger>(info), Ref<DDAbstractLogger>(guest)}) {
    dispatch_sync(logger->loggerQueue(), [] {});
  }

  warnings->sequence.expectComplete();
  info->sequence.expectComplete();
  // The files, in the order in which they were rolled, contain every message.
  Sequence inFiles(LOG_LEVEL_VERBOSE);
  std::size_t lines = 0;
  for (const std::string& path : manager->rolled()) {
    for (const std::string& line : test::linesOf(path)) {
      ++lines;
      const std::size_t stamp = line.find("  ");  // the usual formatter's lines begin with a time and two spaces
      inFiles.take(parse(stamp == std::string::npos ? line : line.substr(stamp + 2)));
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_EQ(lines, static_cast<std::size_t>(messagesInAll));
  inFiles.expectComplete();
  // Not by EXPECT_EQ, which would print all messages.
  EXPECT_FALSE(warnings->sequence.warnings().empty());
  EXPECT_TRUE(warnings->sequence.warnings() == info->sequence.warnings());
  EXPECT_TRUE(warnings->sequence.warnings() == inFiles.warnings());
  EXPECT_EQ(manager->rolled().size(), filesIn(folder.path()).size());
}

}  // namespace
}  // namespace norvik
