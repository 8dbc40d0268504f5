// What the system's log service receives. The service is a socket of the test that behaves as the journal or as a
// syslog daemon, or rsyslog itself if it is installed.
#include "NorvikCore/logging/DDASLLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/SyslogClient.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/GrowingMemory.h"
#include "tests/support/InChild.h"
#include "tests/support/LogServices.h"
#include "tests/support/QuietFork.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace norvik {
namespace {

using test::fieldOf;
using test::journalFields;
using test::LogService;
using test::textOfLine;
using ::testing::ElementsAre;

class Bracketing : public DDLogFormatter {
  NK_OBJECT(Bracketing, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (message.logMsg() == "secret") return std::nullopt;
    return "[" + message.logMsg() + "]";
  }
};

class DDASLLoggerTest : public test::CleanDDLog {
 protected:
  void SetUp() override {
    CleanDDLog::SetUp();
    logger_ = DDASLLogger::sharedInstance();
    DDLog::addLogger(logger_);
  }
  void TearDown() override {
    logger_->setLogFormatter(nullptr);
    CleanDDLog::TearDown();
  }
  /// The levels in the journal of messages with these flags.
  static std::vector<std::string> levelsOf(LogService& journal, const std::vector<int>& flags) {
    std::vector<std::string> levels;
    for (const int flag : flags) {
      DDLog::log(true, 31, flag, 0, "f", "g", 1, nullptr, "flag %d", flag);
      levels.push_back(fieldOf(journalFields(journal.receive()), "PRIORITY"));
    }
    return levels;
  }

  const test::TemporaryFolder folder_;
  const std::string journal_ = folder_.path("journal"), lines_ = folder_.path("log");
  const kernel::SyslogPlaces places_{journal_, lines_};
  Ref<DDASLLogger> logger_;
};

TEST_F(DDASLLoggerTest, HeaderExample) {
  LogService journal(journal_, SOCK_DGRAM);
  clean();
  const NSString name = "Zo\u00EB";
  DDLog::addLogger(DDASLLogger::sharedInstance(), LOG_LEVEL_WARN);
  DDLogWarn("no bank account for %@", name);
  const auto fields = journalFields(journal.receive());
  EXPECT_EQ(fieldOf(fields, "MESSAGE"), "no bank account for Zo\u00EB");
  EXPECT_EQ(fieldOf(fields, "PRIORITY"), "2");
  EXPECT_EQ(fieldOf(fields, "SYSLOG_IDENTIFIER"), "com.apple.console");
}

TEST_F(DDASLLoggerTest, ThereIsOneInstance) {
  EXPECT_EQ(DDASLLogger::sharedInstance(), logger_);
  EXPECT_FALSE(make<DDASLLogger>());
}

TEST_F(DDASLLoggerTest, ItsNameLabelsItsQueue) {
  EXPECT_EQ(logger_->loggerName(), "cocoa.quillmarch.aslLogger");
  EXPECT_STREQ(dispatch_queue_get_label(logger_->loggerQueue()), "cocoa.quillmarch.aslLogger");
}

TEST_F(DDASLLoggerTest, LevelsAreMoreSevereThanTheFlagsSay) {
  LogService journal(journal_, SOCK_DGRAM);
  EXPECT_THAT(levelsOf(journal, {1, 2, 4, 8}), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(levelsOf(journal, {3, 5, 6, 7, 9, 15, 16, 0, -1, -2147483647 - 1}),
              ElementsAre("5", "5", "5", "5", "5", "5", "5", "5", "5", "5"));
}

TEST_F(DDASLLoggerTest, AVerboseMessageIsANoticeAndAnInformationAnError) {
  LogService journal(journal_, SOCK_DGRAM);
  EXPECT_THAT(levelsOf(journal, {LOG_FLAG_VERBOSE, LOG_FLAG_INFO}), ElementsAre("5", "3"));
}

TEST_F(DDASLLoggerTest, AMessageWithoutATextFromItsFormatterIsNotLogged) {
  LogService journal(journal_, SOCK_DGRAM);
  logger_->setLogFormatter(make<Bracketing>());
  for (const bool asynchronous : {true, false}) {
    test::say("secret", LOG_FLAG_ERROR, asynchronous);
    test::say("public", LOG_FLAG_ERROR, asynchronous);
    EXPECT_EQ(fieldOf(journalFields(journal.receive()), "MESSAGE"), "[public]");
  }
  settle();
  EXPECT_FALSE(journal.hasMore());
}

TEST_F(DDASLLoggerTest, TheJournalKnowsWhereAndOnWhichThreadItWasLogged) {
  LogService journal(journal_, SOCK_DGRAM);
  const std::string thread = std::to_string(kernel::currentThreadId());
  kernel::setCurrentThreadName("pay run");
  for (const bool asynchronous : {true, false}) {
    DDLog::log(asynchronous, 31, LOG_FLAG_WARN, 0, "/src/PayRun.cpp", "payEverybody", 42, nullptr, "%d %%", 100);
    const auto fields = journalFields(journal.receive());
    EXPECT_EQ(fieldOf(fields, "MESSAGE"), "100 %");
    EXPECT_EQ(fieldOf(fields, "PRIORITY"), "2");
    EXPECT_EQ(fieldOf(fields, "SYSLOG_IDENTIFIER"), "com.apple.console");
    EXPECT_EQ(fieldOf(fields, "CODE_FILE"), "/src/PayRun.cpp");
    EXPECT_EQ(fieldOf(fields, "CODE_LINE"), "42");
    EXPECT_EQ(fieldOf(fields, "CODE_FUNC"), "payEverybody");
    EXPECT_EQ(fieldOf(fields, "TID"), thread);
    EXPECT_EQ(fieldOf(fields, "THREAD_NAME"), "pay run");
    EXPECT_EQ(fieldOf(fields, "QUEUE_LABEL"), dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL));
  }
  DDLog::log(true, 31, LOG_FLAG_WARN, 0, nullptr, nullptr, 0, nullptr, "%d", 1);
  const auto fields = journalFields(journal.receive());
  EXPECT_EQ(fieldOf(fields, "CODE_FILE"), "(none)");
  EXPECT_EQ(fieldOf(fields, "CODE_FUNC"), "(none)");
  kernel::setCurrentThreadName("");
}

TEST_F(DDASLLoggerTest, TextsOfEveryKindComeWhole) {
  LogService journal(journal_, SOCK_DGRAM);
  const NSString loneHalf = NSString("a𝄞").substringToIndex(2);
  const struct {
    NSString text;
    std::string expected;
  } rows[] = {
      {"100 %s %n %%", "100 %s %n %%"},
      {"two\nlines", "two\nlines"},
      {NSString(std::string_view("zero\0byte", 9)), std::string("zero\0byte", 9)},
      {"", ""},
      {loneHalf, "a\xEF\xBF\xBD"},
      {NSString(std::string(10 << 20, 'x')), std::string(10 << 20, 'x')},
  };
  for (const auto& row : rows) {
    for (const bool asynchronous : {true, false}) {
      test::say(row.text, LOG_FLAG_ERROR, asynchronous);
      EXPECT_TRUE(fieldOf(journalFields(journal.receive()), "MESSAGE") == row.expected) << row.expected.substr(0, 20);
    }
  }
  EXPECT_EQ(journal.filesReceived(), 2);
}

TEST_F(DDASLLoggerTest, ADaemonGetsLocalTimeAndTheShiftedLevel) {
  LogService daemon(lines_, SOCK_DGRAM);
  test::say("no bank account");
  const std::string line = daemon.receive();
  EXPECT_THAT(line, ::testing::MatchesRegex("<9>[A-Z][a-z][a-z] [ 0-9][0-9] [0-9:]+ com.apple.console.[0-9]+.: "
                                            "no bank account"));
}

TEST_F(DDASLLoggerTest, MessagesOfABurstComeInOrderOnceTheServiceTakesThem) {
  LogService journal(journal_, SOCK_DGRAM);
  for (int i = 0; i < 900; ++i) test::say(NSString(std::to_string(i)));
  for (int i = 0; i < 900; ++i) {
    ASSERT_EQ(fieldOf(journalFields(journal.receive()), "MESSAGE"), std::to_string(i));
  }
}

// In a process of its own, because losses are reported at most once a minute.
TEST_F(DDASLLoggerTest, AMissingServiceIsSaidOnceAndItsReturnToo) {
  RUN_IN_CHILD({
    const kernel::SystemLogCapture console;
    const std::uint64_t lostBefore = logger_->lostMessages();
    for (int i = 0; i < 3; ++i) test::say("lost");
    settle();
    EXPECT_EQ(logger_->lostMessages() - lostBefore, 3U);
    LogService journal(journal_, SOCK_DGRAM);
    for (std::string text = "(nothing)"; text != "there again";) {
      test::say("there again");
      settle();
      if (journal.hasMore()) text = fieldOf(journalFields(journal.receive()), "MESSAGE");
    }
    const std::string lost = std::to_string(logger_->lostMessages());
    EXPECT_THAT(console.lines(),
                ElementsAre("DDASLLogger: the system log does not accept messages: No such file or directory; they are "
                            "lost until it does",
                            "DDASLLogger: the system log accepts messages again; " + lost + " were lost"));
  });
}

TEST_F(DDASLLoggerTest, WhatThereIsNoMemoryForIsLostAndCounted) {
  const kernel::SystemLogCapture console;
  LogService journal(journal_, SOCK_DGRAM);
  const std::string text(5000, 'x');
  const auto message = DDLogMessage::initWithLogMsg(NSString(text), 4, 4, 0, "f", "g", 1, Value(), 0);
  for (const bool isFormatted : {false, true}) {
    if (isFormatted) logger_->setLogFormatter(make<Bracketing>());
    settle();
    while (journal.hasMore()) (void)journal.receive();
    const std::uint64_t lostBefore = logger_->lostMessages();
    std::uint64_t received = 0;
    const std::uint64_t logged = test::logWithGrowingMemory(*logger_, *message, [&] {
      if (!journal.hasMore()) return;
      EXPECT_EQ(fieldOf(journalFields(journal.receive()), "MESSAGE"), isFormatted ? "[" + text + "]" : text);
      ++received;
    });
    EXPECT_GE(received, 1U);
    EXPECT_GE(logger_->lostMessages() - lostBefore, 1U);
    EXPECT_EQ(logger_->lostMessages() - lostBefore, logged - received);
  }
}

TEST_F(DDASLLoggerTest, ASlowServiceHoldsUpNeitherCallersNorOtherLoggers) {
  const kernel::SystemLogCapture console;
  LogService journal(journal_, SOCK_DGRAM);
  const auto other = make<test::RecordingLogger>();
  DDLog::addLogger(other);
  const std::int64_t before = kernel::monotonicNanoseconds();
  for (int i = 0; i < 5000; ++i) test::say("message");
  settle();
  EXPECT_LT(kernel::monotonicNanoseconds() - before, 45'000'000'000);  // a hundredth of a second for each would be more
  EXPECT_EQ(other->all().size(), 5002U);                               // including the events of adding and flushing
}

TEST_F(DDASLLoggerTest, AForkedChildLogsWithItsOwnNumber) {
  NK_SKIP_WHERE_A_BUSY_FORK_IS_NOT_SUPPORTED();
  LogService daemon(lines_, SOCK_DGRAM);
  test::say("parent");
  EXPECT_EQ(textOfLine(daemon.receive()), "parent");
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    test::say("child", LOG_FLAG_ERROR, false);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  const std::string line = daemon.receive();
  EXPECT_EQ(textOfLine(line), "child");
  EXPECT_NE(line.find("[" + std::to_string(child) + "]"), line.npos) << line;
}

/// Runs rsyslog with a configuration, a socket and an output of this test, as another user if the test is root.
class RealDaemon {
 public:
  explicit RealDaemon(const test::TemporaryFolder& folder)
      : folder_(folder), output_(folder.path("received")), watch_(inotify_init1(IN_CLOEXEC)) {
    inotify_add_watch(watch_, folder.path().c_str(), IN_CREATE | IN_MODIFY | IN_MOVED_TO);
    configuration_ = folder.write("rsyslog.conf",
                                  "global(workDirectory=\"" + folder.path() +
                                      "\")\n"
                                      "module(load=\"imuxsock\" SysSock.Use=\"off\")\n"
                                      "input(type=\"imuxsock\" Socket=\"" +
                                      folder.path("log") +
                                      "\" IgnoreTimestamp=\"off\" RateLimit.Interval=\"0\")\n"
                                      "template(name=\"plain\" type=\"string\" string=\"%pri% %syslogtag%%msg%\\n\")\n"
                                      "action(type=\"omfile\" file=\"" +
                                      output_ + "\" template=\"plain\")\n");
    chmod(configuration_.c_str(), 0644);  // readable for the other user, independent of the umask
    start();
  }
  RealDaemon(const RealDaemon&) = delete;
  RealDaemon& operator=(const RealDaemon&) = delete;
  ~RealDaemon() {
    stop();
    close(watch_);
  }

  void start() {
    const std::string process = folder_.path("rsyslog.pid");
    const char* const words[] = {program, "-n", "-f", configuration_.c_str(), "-i", process.c_str(), nullptr};
    id_ = fork();
    if (id_ == 0) {
      if (getuid() == 0 && !test::becomeUserWithoutRights(folder_.path())) _exit(1);
      execv(program, const_cast<char* const*>(words));
      _exit(1);
    }
    until([this] { return std::filesystem::exists(folder_.path("log")); });
  }
  void stop() {
    if (id_ <= 0) return;
    kill(id_, SIGTERM);
    waitpid(id_, nullptr, 0);
    id_ = -1;
    std::filesystem::remove(folder_.path("log"));
  }

  /// Returns what the daemon has written, as soon as that ends with `end`, or after ten seconds.
  std::string receivedUntil(const std::string& end) {
    std::string received;
    until([&] {
      received = std::filesystem::exists(output_) ? test::TemporaryFolder::read(output_) : "";
      return received.ends_with(end);
    });
    return received;
  }

  static constexpr const char* program = "/usr/sbin/rsyslogd";

 private:
  void until(const std::function<bool()>& isSo) const {
    const std::int64_t deadline = kernel::monotonicNanoseconds() + 10'000'000'000;
    while (!isSo()) {
      pollfd one{watch_, POLLIN, 0};
      if (kernel::monotonicNanoseconds() > deadline) {
        ADD_FAILURE() << "rsyslog is not ready";
        return;
      }
      char events[4096];
      if (poll(&one, 1, 200) == 1 && read(watch_, events, sizeof events) < 0) return;
    }
  }

  const test::TemporaryFolder& folder_;
  const std::string output_;
  std::string configuration_;
  const int watch_;
  pid_t id_ = -1;
};

TEST_F(DDASLLoggerTest, RsyslogReceivesLevelSourceAndText) {
  if (access(RealDaemon::program, X_OK) != 0) GTEST_SKIP() << "rsyslog is not installed";
  RealDaemon daemon(folder_);
  const std::string source = " com.apple.console[" + std::to_string(getpid()) + "]: ";
  test::say("100 %s of\nmoney for Zoë", LOG_FLAG_ERROR);
  test::say("warning", LOG_FLAG_WARN);
  test::say("information", LOG_FLAG_INFO);
  test::say("debug", LOG_FLAG_DEBUG);
  test::say("verbose", LOG_FLAG_VERBOSE);
  EXPECT_EQ(daemon.receivedUntil("verbose\n"), "9" + source + "100 %s of#012money for Zoë\n10" + source +
                                                   "warning\n11" + source + "information\n12" + source + "debug\n13" +
                                                   source + "verbose\n");
  daemon.stop();
  daemon.start();
  test::say("after a restart");
  EXPECT_TRUE(daemon.receivedUntil("9" + source + "after a restart\n").ends_with("after a restart\n"));
}

}  // namespace
}  // namespace norvik
