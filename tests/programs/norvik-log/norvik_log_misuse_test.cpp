// tests/programs/norvik-log/norvik_log_misuse_test.cpp - requests that the reader must refuse, and runs in a process
// with restrictions.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/programs/norvik-log/ReaderProgram.h"
#include "tests/programs/norvik-log/UnreadPipe.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log_test {
namespace {

using norvik::test::TemporaryFolder;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(NorvikLogMisuse, ARefusalIsOneLineWithoutWhatCouldCommandATerminal) {
  const std::string bad = "\x1b[2J\n\xff";
  const std::string shown = "\\x1b[2J\\x0a\\xff";
  const struct {
    std::vector<std::string> arguments;
    std::string err;
  } rows[] = {
      {{"--x" + bad, "log"}, "there is no option \"--x" + shown + "\"; see norvik-log --help"},
      {{"-l", bad, "log"},
       "--level takes error, warn, info, debug, verbose or a number from 1, not \"" + shown +
           "\"; see norvik-log --help"},
      {{"--log-zone", bad, "log"}, "there is no time zone \"" + shown + "\"; see norvik-log --help"},
      {{"-t", bad, "-i", "/dev/null"}, "\"" + shown + "\" is not UTF-8, which --ignore-case needs"},
  };
  for (const auto& row : rows) {
    const Result result = runReader(row.arguments);
    EXPECT_EQ(result.err, "norvik-log: " + row.err + "\n");
    EXPECT_EQ(result.status, 2);
  }
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"-e", bad + "(", "log"},
                                                    {"--since", bad, "log"},
                                                    {"log", "--html", "/nowhere/" + bad}}) {
    const Result result = runReader(arguments);
    EXPECT_THAT(result.err, HasSubstr(shown));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_EQ(result.status, 2);
  }
}

TEST(NorvikLogMisuse, AMistypedOptionOrAddressIsShownWithoutWhatMayBeAPassword) {
  const struct {
    std::string typed, shown;
  } options[] = {
      {"--postgres=postgresql://pat:secret@h/db", "--postgres=..."},
      {"-postgres=postgresql://pat:secret@h/db", "-postgres=..."},
      {"-zpostgresql://pat:secret@h/db", "-zpostgresql:..."},
      {"--postgresql://pat:secret@h/db", "--postgresql:..."},
      {"--psw=", "--psw="},
  };
  for (const auto& row : options) {
    const Result result = runReader({row.typed, "log"});
    EXPECT_EQ(result.err, "norvik-log: there is no option \"" + row.shown + "\"; see norvik-log --help\n");
    EXPECT_EQ(result.status, 2);
  }
  const struct {
    std::string typed, shown;
  } sources[] = {
      {"postgres=postgresql://pat:secret@h/db", "postgres=..."},
      {"POSTGRESQL://pat:secret@h/db", "POSTGRESQL:..."},
      {"postgresql:/pat:secret@h/db", "postgresql:..."},
      {"host=h PassWord=secret", "host=..."},
      {"/no:where@home/a=b.log", "/no:..."},
      {"/nowhere/at@home.log", "/nowhere/at@home.log"},
      {"/nowhere/10:30=a.log", "/nowhere/10:30=a.log"},
  };
  const std::string ofFile = ": cannot be opened: No such file or directory\n";
  for (const auto& row : sources) {
    EXPECT_EQ(runReader({row.typed}).err, "norvik-log: " + row.shown + ofFile);
    FollowingReader reader({"-f", row.typed});
    EXPECT_EQ(reader.readErrorUntil("norvik-log"), "norvik-log: " + row.shown + ofFile);
  }
}

TEST(NorvikLogMisuse, OutputThatDoesNotBlockIsWaitedFor) {
  const TemporaryFolder folder;
  std::string text;
  while (text.size() < 1'000'000) text += errorLine;
  FollowingReader reader({folder.write("a.log", text)}, [] { ::fcntl(STDOUT_FILENO, F_SETFL, O_WRONLY | O_NONBLOCK); });
  EXPECT_TRUE(reader.readToTheEnd() == text);
  EXPECT_EQ(reader.waitForEnd(), 0);
}

TEST(NorvikLogMisuse, WhereThePatternTakesTooLongThatIsSaidOfFollowedFilesToo) {
  const TemporaryFolder folder;
  const std::string text = std::string(40, 'a') + "b";
  const std::string log = folder.path("a.log");
  std::string twice;
  for (int i = 0; i < 2; ++i) twice += std::string(1 << 20, ' ') + "\n2021-05-10 13:00:00 " + text + "\n";
  folder.write("a.log", twice);  // in separate blocks
  const std::string said =
      "norvik-log: " + log + ": the pattern takes too long on at least one message, which is left out\n";
  EXPECT_EQ(runReader({"-e", "^(a+)+$", log}).err, said);
  FollowingReader reader({"-f", "-e", "^(a+)+$", log});
  EXPECT_EQ(reader.readErrorUntil("takes"), said);
}

TEST(NorvikLogMisuse, WhatHasNoGrowingFileIsNotFollowed) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
  const Result input = runReader({"-f", "-"}, errorLine);
  EXPECT_EQ(input.err,
            "norvik-log: standard input cannot be followed; without --follow it is read to its end; see norvik-log "
            "--help\n");
  EXPECT_EQ(input.status, 2);
  for (const std::string& name : {folder.path("pipe"), std::string("/dev/zero")}) {
    const Result result = runReader({"-f", name});
    EXPECT_EQ(result.err, "norvik-log: " + name + ": is not a regular file, and cannot be followed\n");
    EXPECT_EQ(result.status, 2);
  }
}

TEST(NorvikLogMisuse, APageDoesNotReplaceALogThatItIsMadeFrom) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("logs"));
  const std::string log = folder.write("logs/log-00000A.txt", errorLine);
  std::filesystem::create_symlink(log, folder.path("link"));
  std::filesystem::create_hard_link(log, folder.path("same"));
  for (const auto& [source, page] :
       {std::pair(log, log), {log, folder.path("link")}, {folder.path("same"), log}, {folder.path("logs"), log}}) {
    const Result result = runReader({source, "--html", page});
    EXPECT_EQ(result.err, "norvik-log: the page would replace " + page +
                              ", which is a source; give the page another name; see norvik-log --help\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(TemporaryFolder::read(log), errorLine);
  }
  EXPECT_EQ(runReader({folder.path("logs"), "--html", folder.path("logs/page.html")}).status, 0);
  const Result input =
      runReaderPrepared({"-", "--html", log}, [&] { ::dup2(::open(log.c_str(), O_RDONLY), STDIN_FILENO); });
  EXPECT_EQ(input.err, "norvik-log: the page would replace " + log +
                           ", which is a source; give the page another name; see norvik-log --help\n");
  EXPECT_EQ(TemporaryFolder::read(log), errorLine);
}

TEST(NorvikLogMisuse, AFileThatIsAlsoTheOutputIsLeftOut) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", errorLine), other = folder.write("b.log", errorLine);
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{log, other}, {other, log}}) {
    folder.write("a.log", errorLine);
    const Result result =
        runReaderPrepared(arguments, [&] { ::dup2(::open(log.c_str(), O_WRONLY | O_APPEND), STDOUT_FILENO); });
    EXPECT_EQ(result.err, "norvik-log: " + log + ": is also the output, and is left out\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(TemporaryFolder::read(log), errorLine + errorLine);
  }
  folder.write("a.log", errorLine);
  const Result input = runReaderPrepared({"-"}, [&] {
    ::dup2(::open(log.c_str(), O_RDONLY), STDIN_FILENO);
    ::dup2(::open(log.c_str(), O_WRONLY | O_APPEND), STDOUT_FILENO);
  });
  EXPECT_EQ(input.err, "norvik-log: -: is also the output, and is left out\n");
  EXPECT_EQ(input.status, 2);
  EXPECT_EQ(TemporaryFolder::read(log), errorLine);
  FollowingReader reader({"-f", log, other}, [&] { ::dup2(::open(log.c_str(), O_WRONLY | O_APPEND), STDOUT_FILENO); });
  EXPECT_EQ(reader.readErrorUntil("output"), "norvik-log: " + log + ": is also the output, and is left out\n");
}

TEST(NorvikLogMisuse, WithoutStandardStreamsNothingGoesToAnotherFile) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", errorLine), page = folder.path("page.html");
  EXPECT_EQ(runReaderPrepared({"--html", page, folder.path("gone"), log}, [] { ::close(STDERR_FILENO); }).status, 2);
  EXPECT_THAT(TemporaryFolder::read(page), StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(TemporaryFolder::read(page), Not(HasSubstr("gone")));
  const Result result = runReaderPrepared({log}, [] { ::close(STDOUT_FILENO); });
  EXPECT_EQ(result.err, "norvik-log: standard output cannot be written: Bad file descriptor\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(runReaderPrepared({"-"}, [] { ::close(STDIN_FILENO); }).err,
            "norvik-log: -: cannot be read further: Bad file descriptor\n");
}

TEST(NorvikLogMisuse, ALimitOfFileSizesIsAFault) {
  const TemporaryFolder folder;
  std::string text;
  while (text.size() < 100'000) text += errorLine;
  const std::string log = folder.write("a.log", text);
  const Result result = runReaderPrepared({log}, [] {
    const rlimit limit{4096, 4096};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  });
  EXPECT_EQ(result.err, "norvik-log: standard output cannot be written: File too large\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out.size(), 4096u);
}

TEST(NorvikLogMisuse, WhenNobodyReadsOnItEndsBySigpipeUnlessThatIsIgnored) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", errorLine);
  const Result ended = runReaderPrepared({log}, [] { becomeUnreadPipe(STDOUT_FILENO); });
  EXPECT_EQ(ended.status, 128 + SIGPIPE);
  EXPECT_EQ(ended.err, "");
  const Result told = runReaderPrepared({log}, [] {
    becomeUnreadPipe(STDOUT_FILENO);
    ::signal(SIGPIPE, SIG_IGN);
  });
  EXPECT_EQ(told.status, 2);
  EXPECT_EQ(told.err, "norvik-log: standard output cannot be written: Broken pipe\n");
}

TEST(NorvikLogMisuse, WhatMayNotBeReadIsSaid) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", errorLine), other = folder.write("b.log", errorLine);
  std::filesystem::create_directory(folder.path("logs"));
  ::chmod(log.c_str(), 0);
  ::chmod(other.c_str(), 0644);
  ::chmod(folder.path("logs").c_str(), 0);
  const Result result = runReaderPrepared({log, folder.path("logs"), other}, [&] {
    if (::geteuid() == 0) norvik::test::becomeUserWithoutRights(folder.path());
  });
  EXPECT_EQ(result.err, "norvik-log: " + log + ": cannot be opened: Permission denied\nnorvik-log: " +
                            folder.path("logs") + ": cannot be listed: Permission denied\n");
  EXPECT_EQ(result.out, errorLine);
  EXPECT_EQ(result.status, 2);
}

TEST(NorvikLogMisuse, AnEmptyFileHasNoMessagesAndADeviceIsReadUntilNobodyWantsMore) {
  const TemporaryFolder folder;
  const Result empty = runReader({folder.write("empty")});
  EXPECT_EQ(empty.status, 1);
  EXPECT_EQ(empty.out + empty.err, "");
  FollowingReader reader({"/dev/urandom"});
  reader.readUntil("\n");
  reader.closeOut();
  EXPECT_EQ(reader.waitForEnd(), 128 + SIGPIPE);
}

TEST(NorvikLogMisuse, ALineOf200MegabytesTakesLittleMemory) {
  const TemporaryFolder folder;
  const std::string log = folder.path("a.log");
  {
    const std::string part(1 << 20, 'x');
    std::ofstream file(log, std::ios::binary);
    file << errorLine.substr(0, errorLine.size() - 1);
    for (int i = 0; i < 200; ++i) file << part;
    file << "the end";
  }
  const Result result = measureReader({log, "-t", "the end", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, EndsWith("the end\",\"source\":\"" + log + "\",\"continues\":true}\n"));
  EXPECT_THAT(result.out, StartsWith("{\"time\":\"2021-05-10T13:00:00.000Z\",\"level\":\"ERROR\""));
#ifndef NK_TEST_ADDRESS_SANITIZER
  EXPECT_LT(result.peakKibibytes, 48 << 10);
#endif
}

TEST(NorvikLogMisuse, JsonCannotCommandTheTerminalEither) {
  const TemporaryFolder folder;
  // An escape, U+009B, which also begins a terminal command, and U+202E, which reverses the direction of text.
  const std::string log = folder.write("a.log",
                                       "2021-05-10T13:00:00Z \x1b[2J\xc2\x9b"
                                       "2J\xe2\x80\xae"
                                       "a\xc3\xa9\n");
  const std::string json = R"({"time":"2021-05-10T13:00:00.000Z","text":"\u001b[2J\u009b2J\u202ea)"
                           "\xc3\xa9"
                           R"(","source":")" +
                           log + "\"}\n";
  EXPECT_EQ(runReaderOnTerminal({log, "--json"}, 80).out, json);
  EXPECT_EQ(runReader({log, "--json"}).out, json);
}

TEST(NorvikLogMisuse, OneOptionInTwoSpellingsIsThereTwice) {
  EXPECT_EQ(runReader({"log", "--color", "never", "--colour", "always"}).err,
            "norvik-log: --colour is given twice; see norvik-log --help\n");
}

// The zone of a log's times without an offset, in the night in which London's clocks showed 01:00 to 02:00 twice.
TEST(NorvikLogZone, ARepeatedHourIsTheFirstPassUntilTheTimesStepBackByMoreThanAMinute) {
  const struct {
    const char* why;
    std::vector<const char*> written, utc;
  } rows[] = {
      {"a step back begins the second pass",
       {"01:30:00", "01:10:00", "02:00:00"},
       {"00:30:00", "01:10:00", "02:00:00"}},
      {"without a step all are of the first", {"01:10:00", "01:40:00"}, {"00:10:00", "00:40:00"}},
      {"a step of a minute does not count", {"01:30:00", "01:29:00"}, {"00:30:00", "00:29:00"}},
      {"a step of more does", {"01:30:00", "01:28:59"}, {"00:30:00", "01:28:59"}},
      {"so do lines out of order", {"01:30:00", "01:20:00", "01:31:00"}, {"00:30:00", "01:20:00", "01:31:00"}},
  };
  for (const auto& row : rows) {
    std::string log, json;
    for (const char* const time : row.written) log += "2021-10-31 " + std::string(time) + " x\n";
    for (const char* const time : row.utc) {
      json += "{\"time\":\"2021-10-31T" + std::string(time) + ".000Z\",\"text\":\"x\",\"source\":\"-\"}\n";
    }
    EXPECT_EQ(runReader({"--json", "--log-zone", "Europe/London", "-"}, log, {{"TZ", "Pacific/Apia"}}).out, json)
        << row.why;
  }
}

TEST(NorvikLogZone, EachFileOfAFolderBeginsWithTheFirstPass) {
  const TemporaryFolder folder;
  folder.write("log-00000A.txt", "2021-10-31 01:30:00 a\n2021-10-31 01:00:00 b\n");
  folder.write("log-00000B.txt", "2021-10-31 01:40:00 c\n");
  const std::string out = runReader({"--json", folder.path(), "-t", "c"}).out;
  EXPECT_THAT(out, StartsWith("{\"time\":\"2021-10-31T00:40:00.000Z\""));
}

TEST(NorvikLogZone, ASkippedHourIsTheMomentOfTheChangeAndAnOffsetCountsWithoutABlankInFront) {
  EXPECT_THAT(runReader({"--json", "--log-zone", "Europe/London", "-"}, "2021-03-28 01:30:00 x\n").out,
              StartsWith("{\"time\":\"2021-03-28T01:00:00.000Z\""));
  EXPECT_THAT(runReader({"--json", "--log-zone", "Europe/London", "-"}, "2021-10-31 01:30:00 +0000 x\n").out,
              StartsWith("{\"time\":\"2021-10-31T00:30:00.000Z\""));
  EXPECT_THAT(runReader({"--json", "--log-zone", "Europe/London", "-"}, "2021-10-31 01:30:00+0000 x\n").out,
              StartsWith("{\"time\":\"2021-10-31T01:30:00.000Z\""));
}

TEST(NorvikLogZone, NamesAreThoseOfTheDatabaseAndOffsetsFromGmt) {
  const struct {
    const char *zone, *utc;
  } rows[] = {{"UTC", "13"}, {"GMT+1", "12"}, {"Etc/GMT+1", "14"}, {"Europe/London", "12"}};
  for (const auto& row : rows) {
    EXPECT_THAT(runReader({"--json", "--log-zone", row.zone, "-"}, "2021-05-10 13:00:00 x\n").out,
                StartsWith("{\"time\":\"2021-05-10T" + std::string(row.utc) + ":00:00.000Z\""))
        << row.zone;
  }
  for (const char* const zone : {"europe/london", "+01:00", "../../etc/passwd", "GMT+25:00"}) {
    EXPECT_EQ(runReader({"--log-zone", zone, "-"}).err,
              "norvik-log: there is no time zone \"" + std::string(zone) + "\"; see norvik-log --help\n");
  }
}

TEST(NorvikLogMisuse, LocalesAndTerminalsChangeNothingButColours) {
  const TemporaryFolder folder;
  const std::string log =
      folder.write("a.log", errorLine + "2021-05-10T13:00:01.000Z INFO    [main:7] a.cpp:1  FILING\n");
  const std::string filing = "2021-05-10T13:00:01.000Z INFO    [main:7] a.cpp:1  FILING\n";
  for (const char* const locale : {"tr_TR.UTF-8", "ar_EG.UTF-8", "C", "no_such"}) {
    const Variables variables = {{"LC_ALL", locale}};
    EXPECT_EQ(runReader({log, "-i", "-t", "filing"}, "", variables).out, filing) << locale;
    EXPECT_EQ(runReader({log, "-i", "-e", "FILI[n]g"}, "", variables).out, filing) << locale;
    EXPECT_EQ(runReader({log, "-l", "INFO", "-t", "FIL"}, "", variables).out, filing) << locale;
    EXPECT_EQ(runReader({log, "-l", "info", "-c"}, "", {{"LC_ALL", locale}, {"COLUMNS", "1"}}).out,
              "hour              all\n2021-05-10 14:00    2\n")
        << locale;
    EXPECT_THAT(runReader({log, "-t", "FIL", "--json"}, "", variables).out,
                StartsWith("{\"time\":\"2021-05-10T13:00:01.000Z\""));
  }
  EXPECT_EQ(runReaderOnTerminal({log, "-t", "FIL"}, 1, {{"TERM", ""}}).out, filing);
  EXPECT_EQ(runReaderOnTerminal({log, "-t", "FIL"}, 1, {{"TERM", "dumb"}}).out, filing);
}

}  // namespace
}  // namespace norvik_log_test
