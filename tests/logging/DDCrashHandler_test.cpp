// What a process that crashes leaves behind; crash_child.cpp is that process.
#include "NorvikCore/logging/DDCrashHandler.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "tests/support/LogFolder.h"
#include "tests/support/QuietFork.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

extern char** environ;

namespace norvik {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

using Lines = std::vector<std::string>;

// The two seconds that a crash may take, and time for the process before, while other tests run.
constexpr std::int64_t soon = 5'000'000'000;

/// The entries of a log in SQLite, in order.
Lines textsIn(const std::string& database) {
  sqlite3* connection = nullptr;
  sqlite3_stmt* statement = nullptr;
  Lines texts;
  if (sqlite3_open(database.c_str(), &connection) == SQLITE_OK &&
      sqlite3_prepare_v2(connection, "SELECT text FROM entry ORDER BY id", -1, &statement, nullptr) == SQLITE_OK) {
    while (sqlite3_step(statement) == SQLITE_ROW) {
      texts.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
    }
  }
  sqlite3_finalize(statement);
  sqlite3_close(connection);
  return texts;
}

/// One run of the child, and its results.
class Crash {
 public:
  explicit Crash(const std::string& how, int threads = 1) {
    int out[2];
    EXPECT_EQ(pipe2(out, O_CLOEXEC), 0);
    std::string words[] = {NORVIK_CRASH_CHILD, how, folder_.path(), std::to_string(threads)};
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDERR_FILENO);
    pid_t id = -1;
    const std::int64_t before = kernel::monotonicNanoseconds();
    EXPECT_EQ(posix_spawn(&id, arguments[0], &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    char bytes[4096];
    for (ssize_t count; (count = read(out[0], bytes, sizeof bytes)) > 0;) {
      output.append(bytes, static_cast<std::size_t>(count));
    }
    close(out[0]);
    int status = 0;
    EXPECT_EQ(waitpid(id, &status, 0), id);
    nanoseconds = kernel::monotonicNanoseconds() - before;
    signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    for (const std::string& path : test::filesIn(folder_.path())) {
      if (path.ends_with("mapped")) continue;
      if (path.ends_with("/database")) databaseTexts = textsIn(path);
      if (path.find("/database") != path.npos) continue;
      for (std::string& line : test::linesOf(path)) lines.push_back(std::move(line));
    }
  }

  /// Lists the first `count` messages that are not in the file exactly once; empty if there are none.
  [[nodiscard]] std::string faults(int count) const {
    std::vector<int> found(static_cast<std::size_t>(count));
    for (const std::string& line : lines) {
      const std::size_t at = line.find("message ");
      if (at == line.npos) continue;
      const int number = std::atoi(line.c_str() + at + 8);
      if (number >= 0 && number < count && line.ends_with(" of 10000")) ++found[static_cast<std::size_t>(number)];
    }
    std::string text;
    for (int i = 0; i < count && text.size() < 200; ++i) {
      const int times = found[static_cast<std::size_t>(i)];
      if (times != 1) text += std::to_string(i) + " is there " + std::to_string(times) + " times\n";
    }
    return text;
  }
  /// The lines of the file from the report's first line on.
  [[nodiscard]] Lines report() const {
    const auto first = std::find_if(lines.begin(), lines.end(),
                                    [](const std::string& line) { return line.find("*** SIG") != line.npos; });
    return {first, lines.end()};
  }
  [[nodiscard]] std::string reportText() const {
    std::string text;
    for (const std::string& line : report()) text += line + "\n";
    return text;
  }

  std::string output;
  int signal = 0, code = 0;
  std::int64_t nanoseconds = 0;
  Lines lines, databaseTexts;

 private:
  const test::TemporaryFolder folder_;
};

class DDCrashHandlerTest : public ::testing::Test {
 protected:
  void SetUp() override {
#if defined(NK_TEST_ADDRESS_SANITIZER) || defined(NK_TEST_THREAD_SANITIZER)
    GTEST_SKIP() << "the sanitizers take these signals for themselves";
#endif
  }
};

struct Kind {
  const char* how;
  int signal;
  const char* name;
};
constexpr Kind kinds[] = {{"segv", SIGSEGV, "SIGSEGV"},
                          {"abort", SIGABRT, "SIGABRT"},
                          {"bus", SIGBUS, "SIGBUS"},
                          {"fpe", SIGFPE, "SIGFPE"},
                          {"ill", SIGILL, "SIGILL"}};

/// The number of runs; NORVIK_CRASH_RUNS sets another.
int runs() {
  const char* const given = std::getenv("NORVIK_CRASH_RUNS");
  constexpr int usual = 5;
  return given ? std::atoi(given) : usual;
}

class DDCrashHandlerSignal : public DDCrashHandlerTest, public ::testing::WithParamInterface<Kind> {};

TEST_P(DDCrashHandlerSignal, LeavesAllMessagesAndThenItsNameFromOneThreadAndFromEight) {
  const Kind& kind = GetParam();
  for (const int threads : {1, 8}) {
    for (int run = 0; run < runs(); ++run) {
      const Crash crash(kind.how, threads);
      EXPECT_EQ(crash.signal, kind.signal) << crash.output;
      ASSERT_EQ(crash.faults(10'000), "") << threads << " threads, run " << run;
      const Lines report = crash.report();
      ASSERT_GE(report.size(), 4U) << "run " << run;
      EXPECT_THAT(report[0], MatchesRegex("\\*\\*\\* " + std::string(kind.name) +
                                          ",.* in thread [0-9]+ of process "
                                          "[0-9]+"));
      EXPECT_THAT(crash.reportText(), ContainsRegex("crash_child\\+0x[0-9a-f]+ pay::crashHere\\(std::.*\\) \\+ [0-9]+\n"
                                                    "\\*\\*\\* #[0-9]+ /.*/crash_child\\+0x[0-9a-f]+ "
                                                    "pay::callsWhatCrashes\\(std::.*\\) \\+ [0-9]+"));
      EXPECT_EQ(crash.output, "");
      EXPECT_LT(crash.nanoseconds, soon);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, DDCrashHandlerSignal, ::testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.how); });

/// The output of addr2line for a frame: the function and the line of the source.
std::string resolved(const std::string& frame) {
  const std::size_t path = frame.find('/'), plus = frame.find("+0x", path);
  const std::string command = "addr2line -f -C -e " + frame.substr(path, plus - path) + " " +
                              frame.substr(plus + 1, frame.find(' ', plus) - plus - 1);
  std::FILE* const program = popen(command.c_str(), "r");
  if (!program) return "";
  char text[4096] = {};
  const std::size_t size = std::fread(text, 1, sizeof text, program);
  pclose(program);
  return {text, size};
}

/// The number of the line with that text in the child's source.
std::string lineOf(const std::string& text) {
  const Lines lines = test::linesOf(NORVIK_CRASH_CHILD_SOURCE);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].find(text) != lines[i].npos) return "crash_child.cpp:" + std::to_string(i + 1);
  }
  return "(none)";
}

TEST_F(DDCrashHandlerTest, OffsetsAreThoseOfTheLinesForAddr2line) {
  const Crash crash("segv");
  const Lines report = crash.report();
  ASSERT_GE(report.size(), 3U);
  EXPECT_THAT(report[0], HasSubstr("SIGSEGV, no memory at 0x10, in thread "));
  EXPECT_THAT(resolved(report[1]), HasSubstr("pay::crashHere("));
  EXPECT_THAT(resolved(report[1]), ContainsRegex(lineOf("the line that addr2line is to find") + "[ \n]"));
  EXPECT_THAT(resolved(report[2]), ContainsRegex(lineOf("  crashHere(how);") + "[ \n]"));
}

TEST_F(DDCrashHandlerTest, AnExceptionsTypeAndTextFollowTheSignal) {
  const struct {
    const char *how, *line;
  } rows[] = {{"terminate", "*** std::terminate: std::runtime_error: no bank account for Zoë"},
              {"terminate-nsexception", "*** std::terminate: norvik::NSException: "},
              {"terminate-int", "*** std::terminate: int"},
              {"terminate-on-thread", "*** std::terminate: std::logic_error: on a thread"},
              {"terminate-plain", "*** std::terminate"}};
  for (const auto& row : rows) {
    const Crash crash(row.how);
    EXPECT_EQ(crash.signal, SIGABRT) << row.how;
    EXPECT_EQ(crash.faults(10'000), "") << row.how;
    const Lines report = crash.report();
    ASSERT_GE(report.size(), 3U) << row.how;
    EXPECT_THAT(report[0], HasSubstr("*** SIGABRT, in thread ")) << row.how;
    EXPECT_THAT(report[1], ::testing::StartsWith(row.line));
    EXPECT_THAT(report[2], HasSubstr("*** #0 /")) << row.how;
    EXPECT_EQ(std::count_if(report.begin(), report.end(), [](const auto& line) { return line.starts_with("*** SIG"); }),
              1)
        << row.how;
  }
  EXPECT_THAT(Crash("terminate").reportText(), HasSubstr(" pay::run("));
  EXPECT_THAT(Crash("terminate").output, HasSubstr("terminate called after throwing"));
}

TEST_F(DDCrashHandlerTest, AnExceptionWhoseTextIsNoneIsReportedByItsType) {
  const Crash crash("terminate-without-text");  // the former terminate handler may crash on it
  EXPECT_EQ(crash.faults(10'000), "");
  const Lines report = crash.report();
  ASSERT_GE(report.size(), 2U);
  EXPECT_THAT(report[0], HasSubstr("*** SIGABRT, in thread "));
  EXPECT_EQ(report[1], "*** std::terminate: pay::Wordless");
}

TEST_F(DDCrashHandlerTest, ATerminateHandlerThatEndsTheProcessItselfComesAfterTheReport) {
  const Crash crash("terminate-exit");
  EXPECT_EQ(crash.code, 3);
  EXPECT_EQ(crash.faults(10'000), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("*** std::terminate: std::runtime_error: no bank account"));
}

TEST_F(DDCrashHandlerTest, TheFormerHandlerGetsTheSignalAsItCame) {
  const Crash crash("former");
  EXPECT_EQ(crash.code, 7);
  EXPECT_EQ(crash.output, "former 11 at 0x10\n");
  EXPECT_EQ(crash.faults(10'000), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("*** SIGSEGV, no memory at 0x10"));
}

TEST_F(DDCrashHandlerTest, AStackOverflowIsReportedOnEveryKindOfThreadThatIsCovered) {
  for (const char* how : {"overflow", "overflow-on-thread", "overflow-on-queue"}) {
    const Crash crash(how);
    EXPECT_EQ(crash.signal, SIGSEGV) << how;
    EXPECT_EQ(crash.faults(10'000), "") << how;
    EXPECT_THAT(crash.reportText(), ContainsRegex("#63 .* pay::overflow\\(int\\)")) << how;
  }
}

TEST_F(DDCrashHandlerTest, ACrashInALoggerLeavesAllMessagesOnceInTheFile) {
  for (const char* how : {"crash-in-logger", "crash-in-runs"}) {
    for (int run = 0; run < runs(); ++run) {
      const Crash crash(how);
      EXPECT_EQ(crash.signal, SIGSEGV) << how;
      EXPECT_EQ(crash.output, "crashing\n");
      // The caller continues while the crash is reported, up to the bound of 1000.
      EXPECT_EQ(crash.faults(5001), "") << how;
      EXPECT_THAT(crash.reportText(), HasSubstr("pay::crashHere(")) << how;
      EXPECT_LT(crash.nanoseconds, soon) << how;
    }
  }
}

TEST_F(DDCrashHandlerTest, AStackOverflowInALoggerLeavesAllMessages) {
  const Crash crash("overflow-in-logger");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(501), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("pay::overflow(int)"));
}

TEST_F(DDCrashHandlerTest, WhatWaitedIsFormedWholeWithoutItsLoggers) {
  const Crash crash("values-in-logger");
  EXPECT_EQ(crash.signal, SIGSEGV);
  ASSERT_GE(crash.lines.size(), 3U);
  EXPECT_EQ(crash.lines[0], "message 5000 of 10000");
  EXPECT_THAT(crash.lines[1], MatchesRegex("20[0-9-]+T[0-9:.]+Z  paid 1234"));
  EXPECT_THAT(crash.lines[2], MatchesRegex("20[0-9-]+T[0-9:.]+Z  \\*\\*\\* SIGSEGV, .*"));
}

TEST_F(DDCrashHandlerTest, WhereNobodyGetsMemoryTheHandlerWritesByItself) {
  const Crash crash("without-memory");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(10'000), "");
  EXPECT_THAT(crash.reportText(), ContainsRegex("  \\*\\*\\* #0 /.*/crash_child\\+0x[0-9a-f]+ _ZN3pay9crashHere"));
  EXPECT_LT(crash.nanoseconds, soon);
  const Crash inLogger("crash-without-memory");
  EXPECT_EQ(inLogger.signal, SIGSEGV);
  EXPECT_EQ(inLogger.faults(5001), "");
  EXPECT_THAT(inLogger.reportText(), HasSubstr(" _ZN3pay9crashHere"));
  EXPECT_LT(inLogger.nanoseconds, soon);
}

TEST_F(DDCrashHandlerTest, AWriterThatWaitsForTheCrashedThreadIsWaitedForTwoSecondsAtMost) {
  const Crash crash("lock");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(900), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("*** SIGSEGV, no memory at 0x10"));
  EXPECT_THAT(crash.reportText(), HasSubstr("pay::crashHere("));
  EXPECT_LT(crash.nanoseconds, soon);
}

TEST_F(DDCrashHandlerTest, AReportThatALoggerDoesNotFinishInTimeIsInTheFileOnceAndWhole) {
  for (const char* how : {"stuck-logger", "stuck-midway", "stuck-formatter"}) {
    const Crash crash(how);
    EXPECT_EQ(crash.signal, SIGSEGV) << how;
    EXPECT_EQ(crash.faults(900), "") << how;
    Lines texts;
    for (const std::string& line : crash.report()) texts.push_back(line.substr(line.find("*** ")));
    ASSERT_GE(texts.size(), 4U) << how;
    EXPECT_THAT(texts[0], HasSubstr("*** SIGSEGV, no memory at 0x10, in thread ")) << how;
    for (std::size_t i = 1; i < texts.size(); ++i) {
      EXPECT_THAT(texts[i], HasSubstr("*** #" + std::to_string(i - 1) + " ")) << how;
    }
    EXPECT_THAT(texts[1], HasSubstr(" pay::crashHere(")) << how;
    EXPECT_THAT(texts[2], HasSubstr(" pay::callsWhatCrashes(")) << how;
    EXPECT_THAT(texts.back(), HasSubstr(" _start + ")) << how;
    EXPECT_LT(crash.nanoseconds, soon) << how;
  }
}

TEST_F(DDCrashHandlerTest, TwoThreadsThatCrashAtOnceGiveOneReport) {
  for (int run = 0; run < runs(); ++run) {
    const Crash crash("two", 8);
    EXPECT_EQ(crash.signal, SIGSEGV);
    EXPECT_EQ(crash.faults(10'000), "");
    const Lines report = crash.report();
    EXPECT_EQ(
        std::count_if(report.begin(), report.end(), [](const auto& line) { return line.find("*** SIG") != line.npos; }),
        1);
    EXPECT_LT(crash.nanoseconds, soon);
  }
}

TEST_F(DDCrashHandlerTest, ACrashInTheHandlerItselfLeavesTheMessagesAndTheSignal) {
  const Crash crash("bad-stack");
  EXPECT_EQ(crash.signal, SIGILL);
  EXPECT_EQ(crash.faults(10'000), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("*** SIGILL"));
  EXPECT_LT(crash.nanoseconds, soon);
}

TEST_F(DDCrashHandlerTest, ACallOfNoCodeIsFollowedToItsCaller) {
  const Crash crash("null-call");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(10'000), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("*** #0 0x0\n"));
  EXPECT_THAT(crash.reportText(), HasSubstr(" pay::run("));
}

TEST_F(DDCrashHandlerTest, ADamagedHeapLeavesTheMessages) {
  const Crash crash("heap");
  EXPECT_EQ(crash.signal, SIGABRT);
  EXPECT_EQ(crash.faults(10'000), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("*** SIGABRT"));
}

TEST_F(DDCrashHandlerTest, ACrashInTheLogCallHoldsUpNothing) {
  const Crash crash("bad-argument");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(10'000), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("*** SIGSEGV, no memory at 0x10"));
  EXPECT_LT(crash.nanoseconds, soon);
}

TEST_F(DDCrashHandlerTest, AWriterThatSleepsIsWoken) {
  const Crash crash("quiet");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(100), "");
  EXPECT_THAT(crash.reportText(), HasSubstr("pay::crashHere("));
}

TEST_F(DDCrashHandlerTest, WithoutALoggerTheReportIsOnTheConsole) {
  const Crash crash("no-logger");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_THAT(crash.output, HasSubstr("*** SIGSEGV, no memory at 0x10"));
  EXPECT_THAT(crash.output, HasSubstr("pay::crashHere("));
  EXPECT_LT(crash.nanoseconds, soon);
}

TEST_F(DDCrashHandlerTest, AForkedChildReportsItsOwnCrash) {
  const Crash logging("fork-logs");
  EXPECT_EQ(logging.code, SIGSEGV);
  EXPECT_THAT(logging.faults(1000), HasSubstr("0 is there 2 times\n1 is there 2 times\n"));
  EXPECT_EQ(std::count_if(logging.lines.begin(), logging.lines.end(),
                          [](const auto& line) { return line.starts_with("message "); }),
            2000);
  EXPECT_THAT(logging.reportText(), HasSubstr(" pay::crashHere("));
  const Crash silent("fork-silent");
  EXPECT_EQ(silent.code, SIGSEGV);
  EXPECT_EQ(silent.faults(1000), "");
  EXPECT_THAT(silent.reportText(), HasSubstr(" _ZN3pay9crashHere"));
}

TEST_F(DDCrashHandlerTest, ASignalOfAnotherProcessIsReportedWithItsSender) {
  const Crash crash("sent");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(10'000), "");
  const Lines report = crash.report();
  ASSERT_GE(report.size(), 2U);
  EXPECT_THAT(report[0], MatchesRegex("\\*\\*\\* SIGSEGV, sent by process [0-9]+, in thread [0-9]+ of process [0-9]+"));
}

TEST_F(DDCrashHandlerTest, ADatabaseHasAllMessagesAndTheReportToo) {
  const Crash crash("database");
  EXPECT_EQ(crash.signal, SIGSEGV);
  EXPECT_EQ(crash.faults(10'000), "");
  ASSERT_EQ(crash.databaseTexts.size(), crash.lines.size());
  EXPECT_EQ(crash.databaseTexts, crash.lines);
}

TEST_F(DDCrashHandlerTest, TerminationRemainsTheApplications) {
  const Crash crash("term");
  EXPECT_EQ(crash.signal, SIGTERM);
  EXPECT_EQ(crash.faults(100), "");
  EXPECT_EQ(crash.reportText(), "");
}

TEST_F(DDCrashHandlerTest, IsNotInstalledUnlessItIsAskedFor) {
  EXPECT_FALSE(DDCrashHandler::isInstalled());
  DDCrashHandler::coverThread();
  EXPECT_FALSE(DDCrashHandler::isInstalled());
}

}  // namespace
}  // namespace norvik
