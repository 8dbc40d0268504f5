// tests/programs/norvik-log/norvik_log_test.cpp - the reader end to end, on logs that the library's loggers wrote.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "NorvikCore/logging/DDLogFileInfo.h"
#include "tests/programs/norvik-log/ReaderProgram.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log_test {
namespace {

using norvik::test::ChildProgram;
using norvik::test::TemporaryFolder;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

const std::string lineLog =
    "2021-05-10T13:00:00.000Z ERROR   [main:7] a.cpp:1  first\n"
    "2021-05-10T13:00:00.001Z WARN    [main:7] a.cpp:2  second\\nline\n"
    "2021-05-10T13:30:00.000Z INFO    [worker:8] b.cpp:3  third\n"
    "2021-05-10T14:00:00.000Z DEBUG   [worker:8] b.cpp:4  fourth\n";
const std::string defaultLog =
    "2021/05/10 14:00:00:000  local first\n"
    "  and its second line\n"
    "2021/05/10 14:45:00:000  local second\n";

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    lines.push_back(text.substr(at, end - at));
    at = end == std::string::npos ? text.size() : end + 1;
  }
  return lines;
}

void write(ChildProgram& writer, const std::string& command) {
  writer.write(command + "\n");
  EXPECT_EQ(writer.readLine(), "done");
}

TEST(NorvikLog, ReadsWhatTheLoggerWroteInBothForms) {
  for (const std::string form : {"line", "default"}) {
    const TemporaryFolder folder;
    {
      ChildProgram writer({"/usr/bin/env", "TZ=Europe/London", NORVIK_LOG_WRITER, form, folder.path("logs")});
      write(writer, "log warn Zo\xc3\xab\\nSmith has no account");
      write(writer, "log error \x1b[2J 100% \\\\ gone");
      write(writer, "roll now");
      write(writer, "log debug paid");
    }
    const std::string logs = folder.path("logs");
    const Result all = runReader({logs});
    EXPECT_EQ(all.status, 0) << all.err;
    EXPECT_EQ(all.err, "");
    EXPECT_EQ(linesOf(all.out).size(), form == "line" ? 3u : 4u) << all.out;
    EXPECT_THAT(runReader({logs, "-t", "Zo\xc3\xab\nSmith"}).out, HasSubstr("has no account\n"));
    const Result json = runReader({logs, "--json", "-t", "Smith"});
    EXPECT_THAT(json.out, HasSubstr("\"text\":\"Zo\xc3\xab\\nSmith has no account\""));
    EXPECT_THAT(json.out, MatchesRegex(".\"time\":\"20[0-9-]*T[0-9:.]*Z\".*\n"));
    const Result severe = runReader({logs, "--level", "warn"});
    EXPECT_EQ(severe.status, form == "line" ? 0 : 1);
    EXPECT_EQ(linesOf(severe.out).size(), form == "line" ? 2u : 0u) << severe.out;
    // The messages were logged just now, whatever the zone of the written time.
    EXPECT_EQ(runReader({logs, "--since", "10 minutes ago", "-t", "paid"}).status, 0);
    EXPECT_EQ(runReader({logs, "--until", "10 minutes ago"}).status, 1);
  }
}

TEST(NorvikLog, ReadsAFoldersFilesInTheOrderInWhichTheyWereBegun) {
  const TemporaryFolder folder;
  {
    ChildProgram writer({NORVIK_LOG_WRITER, "line", folder.path("logs"), "0", "100"});
    for (int file = 0; file < 12; ++file) {
      write(writer, "many 25 " + std::to_string(file));
      write(writer, "roll now");
      write(writer, "tick now");  // files with the same time have no order
    }
  }
  const std::vector<std::string> lines = linesOf(runReader({folder.path("logs")}).out);
  ASSERT_EQ(lines.size(), 300u);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_TRUE(lines[i].ends_with("  " + std::to_string(i / 25) + " " + std::to_string(i % 25))) << lines[i];
  }
}

TEST(NorvikLog, FiltersTogether) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", lineLog);
  const struct {
    std::vector<std::string> options;
    std::vector<std::size_t> lines;
  } rows[] = {
      {{}, {0, 1, 2, 3}},
      {{"-l", "info"}, {0, 1, 2}},
      {{"-l", "info", "--thread", "main"}, {0, 1}},
      {{"-t", "i", "-l", "warn"}, {0, 1}},
      {{"-t", "IR", "-i"}, {0, 2}},
      {{"-e", "^(first|line)$"}, {0, 1}},
      {{"-e", "[a-z]+th"}, {3}},
      {{"--since", "2021-05-10 14:00"}, {0, 1, 2, 3}},
      {{"--since", "2021-05-10 14:00", "--utc"}, {3}},
      {{"--since", "2021-05-10T13:00:00.001Z", "--until", "2021-05-10T14:00Z"}, {1, 2}},
      {{"--thread", "8", "-e", "r.$"}, {2}},
  };
  const std::vector<std::string> all = linesOf(lineLog);
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {log}, expected;
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    for (const std::size_t line : row.lines) expected.push_back(all[line]);
    const Result result = runReader(arguments);
    EXPECT_EQ(linesOf(result.out), expected) << testing::PrintToString(row.options) << result.err;
    EXPECT_EQ(result.status, 0);
  }
}

TEST(NorvikLog, MergesSourcesByTimeWhateverTheirForm) {
  const TemporaryFolder folder;
  const std::string a = folder.write("a.log", lineLog), b = folder.write("b.log", defaultLog);
  const Result levelled = runReader({a, b, "-l", "verbose"});
  EXPECT_EQ(levelled.out, lineLog);
  EXPECT_EQ(levelled.err,
            "norvik-log: " + b + ": the first message has no level; --level shows only messages that have one\n");
  EXPECT_EQ(levelled.status, 0);
  EXPECT_EQ(runReader({b, a}).out, "2021/05/10 14:00:00:000  local first\n  and its second line\n" +
                                       lineLog.substr(0, lineLog.find("2021-05-10T14")) +
                                       "2021/05/10 14:45:00:000  local second\n" +
                                       lineLog.substr(lineLog.find("2021-05-10T14")));
  EXPECT_EQ(runReader({b, a, "--log-zone", "Asia/Tokyo"}).out, defaultLog + lineLog);
  EXPECT_THAT(runReader({a, b, "-H", "-t", "and"}).out,
              "" + b + ": 2021/05/10 14:00:00:000  local first\n" + b + ":   and its second line\n");
}

TEST(NorvikLog, CountsAndDrawsInTheTerminalsWidth) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", lineLog);
  EXPECT_EQ(runReader({log, "-c", "--utc"}).out,
            "hour              error  warn  info  debug\n"
            "2021-05-10 13:00      1     1     1      0  EEEEEEEEEEEEWWWWWWWWWWWWIIIIIIIIIIII\n"
            "2021-05-10 14:00      0     0     0      1  DDDDDDDDDDDD\n"
            "all                   1     1     1      1\n");
  EXPECT_EQ(runReaderOnTerminal({log, "-c", "--color=never"}, 56).out,
            "hour              error  warn  info  debug\n"
            "2021-05-10 14:00      1     1     1      0  EEEEWWWWIIII\n"
            "2021-05-10 15:00      0     0     0      1  DDDD\n"
            "all                   1     1     1      1\n");
  EXPECT_EQ(linesOf(runReader({log, "-c"}, "", {{"COLUMNS", "50"}}).out)[2], "2021-05-10 15:00    1  DDDDDDDDD");
}

TEST(NorvikLog, ColoursAreForTerminalsUnlessToldOtherwise) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", lineLog);
  const std::string coloured =
      "\x1b[2m2021-05-10T13:00:00.000Z \x1b[0m\x1b[1;31mERROR\x1b[0m\x1b[2m   [main:7] a.cpp:1  \x1b[0m"
      "first\n";
  const Variables xterm = {{"TERM", "xterm"}};
  EXPECT_EQ(runReaderOnTerminal({log, "-l", "error"}, 80, xterm).out, coloured);
  EXPECT_EQ(runReaderOnTerminal({log, "-l", "error"}, 80, {{"TERM", "dumb"}}).out, linesOf(lineLog)[0] + "\n");
  EXPECT_EQ(runReaderOnTerminal({log, "-l", "error"}, 80, {{"TERM", "xterm"}, {"NO_COLOR", "1"}}).out,
            linesOf(lineLog)[0] + "\n");
  EXPECT_EQ(runReaderOnTerminal({log, "-l", "error", "--color=never"}, 80, xterm).out, linesOf(lineLog)[0] + "\n");
  EXPECT_EQ(runReader({log, "-l", "error"}, "", xterm).out, linesOf(lineLog)[0] + "\n");
  EXPECT_EQ(runReader({log, "-l", "error", "--color", "always"}).out, coloured);
}

TEST(NorvikLog, WhatALogHoldsCannotCommandTheTerminal) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", "2021/05/10 14:00:00:000  \x1b]0;title\x07 \xff\n");
  EXPECT_EQ(runReaderOnTerminal({log, "--color=never"}, 80).out, "2021/05/10 14:00:00:000  \\x1b]0;title\\x07 \\xff\n");
  EXPECT_EQ(runReader({log}).out, "2021/05/10 14:00:00:000  \x1b]0;title\x07 \xff\n");
}

TEST(NorvikLog, SaysWhatCannotBeReadAndGoesOn) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", lineLog);
  std::filesystem::create_directory(folder.path("empty"));
  const Result result = runReader({folder.path("gone.log"), log, folder.path("empty"), "-t", "first"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, linesOf(lineLog)[0] + "\n");
  EXPECT_EQ(result.err, "norvik-log: " + folder.path("gone.log") + ": cannot be opened: No such file or directory\n" +
                            "norvik-log: " + folder.path("empty") +
                            ": has no log files; their names begin with \"log-\" and six characters of 0-9 and A-F\n");
}

TEST(NorvikLog, PassesOverWhatIsNoFileInAFolder) {
  const TemporaryFolder folder;
  folder.write("log-ABCDEF.txt", lineLog);
  folder.write("notes.txt", lineLog);
  ASSERT_EQ(::mkfifo(folder.path("log-012345.txt").c_str(), 0600), 0);
  const Result result = runReader({folder.path()});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, lineLog);
  EXPECT_EQ(result.err, "norvik-log: " + folder.path("log-012345.txt") + ": is not a regular file, and is left out\n");
}

TEST(NorvikLog, ReadsStandardInputAndNamedPipes) {
  EXPECT_EQ(runReader({"-", "-l", "error"}, lineLog).out, linesOf(lineLog)[0] + "\n");
  const TemporaryFolder folder;
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread writing([&] {
    const int descriptor = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(::write(descriptor, lineLog.data(), lineLog.size()), static_cast<ssize_t>(lineLog.size()));
    ::close(descriptor);
  });
  EXPECT_EQ(runReader({pipe, "-t", "third"}).out, linesOf(lineLog)[2] + "\n");
  writing.join();
}

TEST(NorvikLog, BytesOfAllKindsGoThroughAsTheyAre) {
  const TemporaryFolder folder;
  const std::string odd = std::string("no time\0\xff\n", 10) + lineLog + "2021-05-10T13:0";
  const std::string log = folder.write("a.log", odd);
  EXPECT_EQ(runReader({log}).out, odd + "\n");  // with the incomplete line at the end
  EXPECT_EQ(runReader({log, "-t", std::string("\xff")}).out, std::string("no time\0\xff\n", 10));
  EXPECT_EQ(runReader({log, "--json"}).status, 0);
}

TEST(NorvikLog, LargeFilesAreReadInChunksWithTheSameAnswerAndLittleMemory) {
  const TemporaryFolder folder;
  std::string text, expected;
  for (int i = 0; text.size() < (norvik::test::isSanitized ? 8U << 20 : 40U << 20); ++i) {
    const std::string line = "2021-05-10T13:30:12.045Z " + std::string(i % 1000 == 7 ? "WARN   " : "INFO   ") +
                             " [main:7] a.cpp:1  number " + std::to_string(i) + (i % 977 == 0 ? " rare" : "") + "\n";
    text += line;
    if (i % 977 == 0) expected += line;
  }
  const std::string log = folder.write("a.log", text);
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"-t", "rare"}, {"-e", "[0-9]+ rare"}, {"-e", "rar[e]$"}}) {
    std::vector<std::string> arguments = {log};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Result result = measureReader(arguments);
    EXPECT_EQ(result.out == expected, true) << testing::PrintToString(options);
#ifndef NK_TEST_ADDRESS_SANITIZER
    EXPECT_LT(result.peakKibibytes, 64 << 10);
    EXPECT_GT(result.peakKibibytes, 1 << 10);
#endif
  }
  const Result all = measureReader({log});
  EXPECT_EQ(all.out == text, true);
#ifndef NK_TEST_ADDRESS_SANITIZER
  EXPECT_LT(all.peakKibibytes, 96 << 10);
#endif
}

TEST(NorvikLog, RefusesACommandLineInOneSentence) {
  const struct {
    std::vector<std::string> arguments;
    const char* err;
  } rows[] = {
      {{}, "norvik-log: no source is given; name a file, a folder of log files or a database; see norvik-log --help\n"},
      {{"x", "--since", "soon"},
       "norvik-log: \"soon\" is not a time; write it as \"14:00\", \"yesterday 14:00\", \"monday\", \"2 hours "
       "ago\", "
       "\"2021-05-10\" or \"2021-05-10 13:30:12.045Z\"\n"},
      {{"x", "-e", "pay("},
       "norvik-log: \"pay(\" is not a regular expression: missing closing parenthesis, at character 5\n"},
      {{"x", "--log-zone", "Europe/Nowhere"},
       "norvik-log: there is no time zone \"Europe/Nowhere\"; see norvik-log --help\n"},
      {{"-", "--html", "/nowhere/log.html"},
       "norvik-log: /nowhere/log.html cannot be written: No such file or directory\n"},
  };
  for (const auto& row : rows) {
    const Result result = runReader(row.arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, row.err);
    EXPECT_EQ(result.out, "");
  }
  EXPECT_THAT(runReader({"--help"}).out, StartsWith("norvik-log - finds, counts and follows"));
  EXPECT_THAT(runReader({"--version"}).out, MatchesRegex("norvik-log [0-9.]+\n"));
}

TEST(NorvikLog, AFullDiskIsAFault) {
  const TemporaryFolder folder;
  const Result result = runReader({folder.write("a.log", ""), "--html", "/dev/full"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "norvik-log: /dev/full cannot be written: No space left on device\n");
}

}  // namespace
}  // namespace norvik_log_test
