// What a process leaves of its log, independent of how it ends; log_child.cpp is the process.
#include "tests/support/LogFolder.h"
#include "tests/support/Sanitizers.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <iterator>
#include <string>
#include <vector>

extern char** environ;

namespace norvik {
namespace {

using test::allLinesIn;
using test::filesIn;
using test::TemporaryFolder;
using ::testing::ElementsAre;

class Child {
 public:
  explicit Child(std::vector<std::string> arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) ADD_FAILURE() << "no pipe";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::string program = NORVIK_LOG_CHILD;
    std::vector<char*> argv{program.data()};
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    if (posix_spawn(&id_, program.c_str(), &actions, nullptr, argv.data(), environ) != 0) {
      ADD_FAILURE() << "cannot start " << program;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() { close(output_); }

  /// Returns the exit code, or 1000 plus the signal. A process that has not ended after 60 seconds is killed.
  int wait() {
    readOutput();
    int status = 0;
    waitpid(id_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  [[nodiscard]] const std::vector<std::string>& output() const { return lines_; }

 private:
  void readOutput() {
    std::string text;
    const std::time_t end = std::time(nullptr) + 60;
    for (;;) {
      pollfd ready{output_, POLLIN, 0};
      const auto left = static_cast<int>(end - std::time(nullptr));
      if (left <= 0) {
        ADD_FAILURE() << "the process hangs";
        kill(id_, SIGKILL);
        break;
      }
      if (poll(&ready, 1, left * 1000) <= 0) continue;
      char bytes[4096];
      const ssize_t count = read(output_, bytes, sizeof bytes);
      if (count <= 0) break;
      text.append(bytes, static_cast<std::size_t>(count));
    }
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines_.push_back(line);
  }

  pid_t id_ = 0;
  int output_ = -1;
  std::vector<std::string> lines_;
};

TEST(DDLogProcess, ALineThatWasLoggedSynchronouslySurvivesAnyEnd) {
  for (int i = 0; i < 100; ++i) {
    const TemporaryFolder folder;
    Child child({"kill", folder.path()});
    ASSERT_EQ(child.wait(), 1000 + SIGKILL);
    const std::vector<std::string> lines = allLinesIn(folder.path());
    ASSERT_EQ(lines.size(), 21U);
    ASSERT_EQ(lines.back(), "last");
  }
}

TEST(DDLogProcess, LinesSurviveACrashSoonAfter) {
  const TemporaryFolder folder;
  Child child({"abort", folder.path()});
  EXPECT_EQ(child.wait(), 1000 + SIGABRT);
  EXPECT_EQ(allLinesIn(folder.path()).size(), 10000U);
}

TEST(DDLogProcess, AProcessWithoutThreadsWritesEveryLineInOrderAndEnds) {
  const TemporaryFolder folder;
  Child child({"no-threads", folder.path()});
  EXPECT_EQ(child.wait(), 0);
  const std::vector<std::string> lines = allLinesIn(folder.path());
  EXPECT_EQ(lines.size(), 3501U);
  std::vector<std::string> own, expected;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(own),
               [](const std::string& line) { return line.starts_with("line "); });
  for (int i = 0; i < 1500; ++i) expected.push_back("line " + std::to_string(i));
  EXPECT_EQ(own, expected);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "from another thread"), 1500);
  EXPECT_EQ(lines[3000], "synchronous");
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "at the end"), 500);
}

TEST(DDLogProcess, AForkedChildWithoutThreadsWritesEveryLineAndEnds) {
  const TemporaryFolder folder;
  Child child({"fork-without-threads", folder.path()});
  EXPECT_EQ(child.wait(), 0);
  const std::vector<std::string> lines = allLinesIn(folder.path());
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "parent"), 20);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "child"), 1500);
}

TEST(DDLogProcess, AFileLoggerWithoutMessagesTakesNoProcessorTime) {
  const TemporaryFolder folder;
  Child child({"idle", folder.path()});
  EXPECT_EQ(child.wait(), 0);
  ASSERT_EQ(child.output().size(), 1U);
  EXPECT_LT(std::stol(child.output()[0]), 5000) << "microseconds of one second: more than 0.5 % of a processor";
}

TEST(DDLogProcess, OnOneProcessorTheLoggersRunOneAfterTheOther) {
  Child child({"one-processor"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_THAT(child.output(),
              ElementsAre("a begins queued", "a ends", "b begins queued", "b ends", "c begins queued", "c ends",
                          "a begins now", "a ends", "b begins now", "b ends", "c begins now", "c ends"));
}

TEST(DDLogProcess, ProcessesMayShareAFileAndLoseNothing) {
  const TemporaryFolder folder;
  folder.write("log-ABC123.txt");
  Child a({"append", folder.path()}), b({"append", folder.path()}), c({"append", folder.path()});
  EXPECT_EQ(a.wait(), 0);
  EXPECT_EQ(b.wait(), 0);
  EXPECT_EQ(c.wait(), 0);
  ASSERT_EQ(filesIn(folder.path()).size(), 1U);
  const std::vector<std::string> lines = allLinesIn(folder.path());
  EXPECT_EQ(lines.size(), 6000U);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "a line of the process"), 6000);
}

TEST(DDLogProcess, EveryLoggerIsFlushedAtTheNotificationAndLastOfAll) {
  Child child({"return"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_THAT(child.output(), ElementsAre("message queued", "flush", "flush"));
}

TEST(DDLogProcess, WhatStaticDestructorsLogIsFlushedToo) {
  Child child({"static"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_THAT(child.output(), ElementsAre("message queued", "flush", "message from a static destructor", "flush"));
}

TEST(DDLogProcess, LoggersAreFlushedLastOfAllAlsoWhereTheApplicationPostedEarlier) {
  Child child({"posted"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_THAT(child.output(), ElementsAre("flush", "message after the notification", "flush"));
}

TEST(DDLogProcess, ExitInALoggerDoesNotHang) {
  Child child({"exit-in-logger"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(child.output().front(), "message exit");
  EXPECT_EQ(child.output().back(), "flush");
}

TEST(DDLogProcess, ExitInALoggerOfASynchronousCallDoesNotHang) {
  Child child({"exit-in-logger-synchronously"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(child.output().back(), "flush");
}

TEST(DDLogProcess, ExitInOneOfTwoLoggersDoesNotHang) {
  Child child({"exit-in-one-of-two-loggers"});
  EXPECT_EQ(child.wait(), 0);
}

TEST(DDLogProcess, ExitOnTheLoggingQueueDoesNotHang) {
  Child child({"exit-on-logging-queue"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(child.output().back(), "flush");
}

TEST(DDLogProcess, ExitOnAQueueThatALoggersQueueTargetsDoesNotHang) {
  Child child({"exit-on-a-loggers-target"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(child.output().front(), "message before");
  EXPECT_EQ(child.output().back(), "flush");
}

TEST(DDLogProcess, ALoggerOnTheMainQueueHoldsUpNeitherTheMainThreadNorTheEnd) {
  Child child({"return-with-a-logger-on-the-main-queue"});
  EXPECT_EQ(child.wait(), 0);
  ASSERT_EQ(child.output().size(), 1502U);
  EXPECT_EQ(std::count(child.output().begin(), child.output().end(), "message queued"), 1500);
  EXPECT_EQ(child.output()[1500], "flush");
  EXPECT_EQ(child.output()[1501], "flush");
}

TEST(DDLogProcess, AForkPassesLoggersWhoseQueuesShareATarget) {
  Child child({"fork-with-queues-of-one-target"});
  EXPECT_EQ(child.wait(), 0);
  const std::vector<std::string>& lines = child.output();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "message before"), 2);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "message after"), 2);
}

TEST(DDLogProcess, ExitOnAnotherThreadFlushes) {
  Child child({"exit-in-thread"});
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(child.output().front(), "message queued");
  EXPECT_EQ(child.output().back(), "flush");
}

TEST(DDLogProcess, AForkedChildMayLogAndExitsWithoutHanging) {
#ifdef NK_TEST_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer starts no threads in a child made by fork()";
#endif
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the address sanitizer's own heap may be locked for ever in a child of a busy process";
#endif
  const TemporaryFolder folder;
  Child child({"fork", folder.path()});
  EXPECT_EQ(child.wait(), 0);
}

}  // namespace
}  // namespace norvik
