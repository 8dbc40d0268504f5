// tests/programs/norvik-log/norvik_log_follow_test.cpp - the reader follows what another process logs.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Follow.h"
#include "tests/programs/norvik-log/ReaderProgram.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log_test {
namespace {

using norvik::test::ChildProgram;
using norvik::test::TemporaryFolder;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

void write(ChildProgram& writer, const std::string& command) {
  writer.write(command + "\n");
  EXPECT_EQ(writer.readLine(), "done");
}

void append(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::app);
  file << text << std::flush;
}

const std::string time = "2021-05-10 13:30:12 ";

TEST(NorvikLogFollow, LosesAndRepeatsNothingAcrossRolls) {
  const TemporaryFolder folder;
  ChildProgram writer({NORVIK_LOG_WRITER, "line", folder.path("logs"), "4000", "1000"});
  write(writer, "many 100 begun");
  FollowingReader reader({"-f", folder.path("logs")});
  std::string out = reader.readUntil("begun 99");
  for (int round = 0; round < 5; ++round) {
    write(writer, "many 400 round " + std::to_string(round));
    write(writer, "roll now");
  }
  write(writer, "tick now");
  write(writer, "log info the end");
  out += reader.readUntil("the end");
  std::vector<std::string> texts;
  for (std::size_t at = 0; at < out.size();) {
    const std::size_t end = out.find('\n', at);
    const std::string line = out.substr(at, end - at);
    texts.push_back(line.substr(line.find("  ", 34) + 2));
    at = end + 1;
  }
  std::vector<std::string> expected;
  for (int i = 0; i < 100; ++i) expected.push_back("begun " + std::to_string(i));
  for (int round = 0; round < 5; ++round) {
    for (int i = 0; i < 400; ++i) expected.push_back("round " + std::to_string(round) + " " + std::to_string(i));
  }
  expected.emplace_back("the end");
  EXPECT_GT(std::distance(std::filesystem::directory_iterator(folder.path("logs")), {}), 20);
  EXPECT_EQ(texts.back(), "the end");
  // Files that were created at the same time have no order.
  std::sort(texts.begin(), texts.end());
  std::sort(expected.begin(), expected.end());
  std::vector<std::string> lost, repeated;
  std::set_difference(expected.begin(), expected.end(), texts.begin(), texts.end(), std::back_inserter(lost));
  std::set_difference(texts.begin(), texts.end(), expected.begin(), expected.end(), std::back_inserter(repeated));
  EXPECT_THAT(lost, IsEmpty());
  EXPECT_THAT(repeated, IsEmpty());
}

// While the reader is stopped after it has read the last file to its end, more files are created than the reader keeps
// open.
TEST(NorvikLogFollow, AFileThatGrowsBeforeManyNewOnesAndIsRemovedIsReadToItsEnd) {
  const TemporaryFolder folder;
  const auto lineOf = [](int number, const std::string& text) {
    return "2021-05-10T13:30:" + std::to_string(number) + "Z " + text + "\n";
  };
  const std::string first = folder.write("log-000010.txt", lineOf(10, "one"));
  FollowingReader reader({"--follow", folder.path()});
  EXPECT_EQ(reader.readUntil("one"), lineOf(10, "one"));
  reader.signal(SIGSTOP);
  append(first, lineOf(10, "two"));
  std::string all = lineOf(10, "two");
  for (int i = 11; i < 30; ++i) {
    all += lineOf(i, "file " + std::to_string(i));
    folder.write("log-0000" + std::to_string(i) + ".txt", lineOf(i, "file " + std::to_string(i)));
  }
  std::filesystem::remove(first);
  reader.signal(SIGCONT);
  EXPECT_EQ(reader.readUntil("file 29"), all);
}

TEST(NorvikLogFollow, GoesOnWhenFilesAreRenamedOrRemoved) {
  const TemporaryFolder folder;
  const std::string first = folder.write("log-000001.txt", time + "one\n");
  FollowingReader reader({"--follow", folder.path()});
  EXPECT_EQ(reader.readUntil("one"), time + "one\n");
  std::filesystem::rename(first, folder.path("log-00000A.txt"));
  append(folder.path("log-00000A.txt"), time + "two\n");
  EXPECT_EQ(reader.readUntil("two"), time + "two\n");
  std::filesystem::rename(folder.path("log-00000A.txt"), folder.path("away"));
  append(folder.path("away"), time + "three\n");
  EXPECT_EQ(reader.readUntil("three"), time + "three\n");
  folder.write("log-000002.txt", time + "four\n");
  EXPECT_EQ(reader.readUntil("four"), time + "four\n");
}

TEST(NorvikLogFollow, AFileThatIsReplacedIsFollowedByItsName) {
  const TemporaryFolder folder;
  const std::string log = folder.write("pay.log", time + "one\n");
  FollowingReader reader({"-f", log});
  EXPECT_EQ(reader.readUntil("one"), time + "one\n");
  std::filesystem::rename(log, folder.path("pay.log.1"));
  append(folder.path("pay.log.1"), time + "two\n");
  append(log, time + "three\n");
  EXPECT_EQ(reader.readUntil("three"), time + "two\n" + time + "three\n");
}

TEST(NorvikLogFollow, AFileThatIsMissingIsWaitedFor) {
  const TemporaryFolder folder;
  FollowingReader reader({"-f", folder.path("pay.log")});
  EXPECT_THAT(reader.readErrorUntil("cannot"), EndsWith("pay.log: cannot be opened: No such file or directory\n"));
  append(folder.path("pay.log"), time + "one\n");
  EXPECT_EQ(reader.readUntil("one"), time + "one\n");
}

TEST(NorvikLogFollow, AFileThatBecameShorterIsReadFromItsStart) {
  const TemporaryFolder folder;
  const std::string log = folder.write("pay.log", time + "one\n" + time + "more\n");
  FollowingReader reader({"-f", log});
  EXPECT_EQ(reader.readUntil("more"), time + "one\n" + time + "more\n");
  std::filesystem::resize_file(log, 0);
  append(log, time + "two\n");
  EXPECT_THAT(reader.readErrorUntil("shorter"), HasSubstr("became shorter, and is read from its start again"));
  EXPECT_EQ(reader.readUntil("two"), time + "two\n");
}

TEST(NorvikLogFollow, HalfALineIsHeldUntilItIsWhole) {
  const TemporaryFolder folder;
  const std::string log = folder.write("pay.log", time + "one\n" + time + "tw");
  FollowingReader reader({"-f", log, "-t", "o"});
  EXPECT_EQ(reader.readUntil("one"), time + "one\n");
  append(log, "o\n" + time + "four\n");
  EXPECT_EQ(reader.readUntil("four"), time + "two\n" + time + "four\n");
}

TEST(NorvikLogFollow, LinesThatComeLaterBelongToTheMessageBefore) {
  const TemporaryFolder folder;
  const std::string log = folder.write("pay.log", "2021-05-10T13:30:12.045Z WARN    [q:7] a.cpp:1  one\n");
  FollowingReader reader({"-f", log, "-l", "warn", "--json"});
  EXPECT_THAT(reader.readUntil("one"), HasSubstr("\"text\":\"one\""));
  append(log, "and more\n");
  const std::string later = reader.readUntil("and more");
  EXPECT_THAT(later, HasSubstr("\"level\":\"WARN\""));
  EXPECT_THAT(later, HasSubstr("\"continues\":true"));
}

// The second line's text is at the position where the first piece of a mebibyte could end.
TEST(NorvikLogFollow, WhatLooksLikeATimeWithinALongLineBeginsNoMessage) {
  const TemporaryFolder folder;
  const std::string head = "2021-05-10T13:30:12.045Z WARN    [q:7] a.cpp:1  ";
  const std::string forged = "2021-05-10T13:30:12.045Z ERROR   [q:7] a.cpp:1  forged";
  std::string text = head + std::string((1 << 20) - head.size(), 'x') + forged + std::string(1 << 20, 'x') + "\n";
  const std::string log = folder.write("pay.log", text);
  append(log, time + "the end\n");
  FollowingReader reader({"-f", "--json", log});
  const std::string shown = reader.readUntil("the end");
  EXPECT_THAT(shown, HasSubstr("forged"));
  EXPECT_EQ(shown.find("\"ERROR\""), std::string::npos);
}

TEST(NorvikLogFollow, AFolderOfManyFilesTakesLittleMemory) {
  const TemporaryFolder folder;
  for (int i = 1000; i < 1400; ++i) folder.write("log-00" + std::to_string(i) + ".txt", time + "one\n");
  append(folder.path("log-001399.txt"), time + "the end\n");
  FollowingReader reader({"-f", folder.path()});
  reader.readUntil("the end");
#ifndef NK_TEST_ADDRESS_SANITIZER
  EXPECT_LT(reader.peakKibibytes(), 48 << 10);
#endif
}

/// The number of open files of this process that were removed.
int countOfRemovedFiles() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code unknown;
    count += std::filesystem::read_symlink(entry.path(), unknown).string().ends_with(" (deleted)") ? 1 : 0;
  }
  return count;
}

/// The messages that are read from a folder, on the test's own clock.
class FollowedPath : public testing::Test {
 protected:
  std::string lookAndRead(std::chrono::seconds later) {
    std::string texts;
    now_ += later;
    followed_.look(now_, true);
    for (norvik_log::Batch batch; followed_.next(batch); batch = norvik_log::Batch()) {
      for (std::size_t i = 0; i < batch.size(); ++i) texts += std::string(batch[i].bytes) + "\n";
    }
    return texts;
  }

  const TemporaryFolder folder_;
  const norvik_log::Filter filter_{};
  norvik_log::Troubles troubles_;
  const norvik_log::WallClock clock_{norvik::NSTimeZone::timeZoneForSecondsFromGMT(0)};
  const norvik_log::Reading reading_{filter_, clock_, troubles_};
  norvik_log::FollowedPath followed_{folder_.path(), reading_};
  norvik_log::Moment now_ = std::chrono::steady_clock::now();
};

TEST_F(FollowedPath, FilesThatWereRemovedAreClosedAlsoWhereAnOlderOneStays) {
  folder_.write("log-000001.txt", time + "one\n");
  const std::string second = folder_.write("log-000002.txt", time + "two\n");
  folder_.write("log-000003.txt", time + "three\n");
  const int before = countOfRemovedFiles();
  std::string texts = lookAndRead(std::chrono::seconds(0));
  std::filesystem::remove(second);
  texts += lookAndRead(std::chrono::seconds(10));
  EXPECT_EQ(countOfRemovedFiles(), before + 1);
  texts += lookAndRead(std::chrono::seconds(10));
  EXPECT_EQ(countOfRemovedFiles(), before);
  EXPECT_EQ(texts, time + "one\n" + time + "two\n" + time + "three\n");
  EXPECT_FALSE(troubles_.any());
}

TEST_F(FollowedPath, HalfALineThatIsLeftInAFileIsShownOnceTheNextOneIsThere) {
  using std::chrono::seconds;
  const std::string first = folder_.write("log-000001.txt", time + "one\n" + time + "kill");
  std::string shown = lookAndRead(seconds(0));
  EXPECT_EQ(shown += lookAndRead(seconds(1)), time + "one\n");
  EXPECT_EQ(lookAndRead(seconds(10)), "");
  folder_.write("log-000002.txt", time + "two\n");
  shown = lookAndRead(seconds(1));
  EXPECT_EQ(shown += lookAndRead(seconds(1)), time + "kill\n" + time + "two\n");
  EXPECT_EQ(lookAndRead(seconds(10)), "");
  append(first, "ed\n" + time + "three\n");
  EXPECT_EQ(lookAndRead(seconds(1)), "ed\n" + time + "three\n");
}

TEST(GrowingFile, AFailureToReadIsSaid) {
  const TemporaryFolder folder;
  const std::string log = folder.write("pay.log", time + "one\n");
  const norvik_log::Filter filter{};
  norvik_log::Troubles troubles;
  const norvik_log::WallClock clock(norvik::NSTimeZone::timeZoneForSecondsFromGMT(0));
  const norvik_log::Reading reading{filter, clock, troubles};
  norvik_log::GrowingFile file(::open(log.c_str(), O_WRONLY | O_CLOEXEC), log, reading);
  norvik_log::Batch batch;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(file.next(batch, std::chrono::steady_clock::now(), true));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "norvik-log: " + log + ": cannot be read further: Bad file descriptor\n");
  EXPECT_TRUE(troubles.any());
}

TEST(NorvikLogFollow, SeveralSourcesAreFollowedAtOnce) {
  const TemporaryFolder folder;
  const std::string a = folder.write("a.log", "2021-05-10 13:30:12 a1\n2021-05-10 13:30:14 a3\n");
  const std::string b = folder.write("b.log", "2021-05-10 13:30:13 b2\n2021-05-10 13:30:15 b4\n");
  FollowingReader reader({"-f", a, b});
  EXPECT_EQ(reader.readUntil("a1"), "2021-05-10 13:30:12 a1\n");
  reader.readUntil("b4");
  append(a, "2021-05-10 13:30:16 a5\n");
  EXPECT_EQ(reader.readUntil("a5"), "2021-05-10 13:30:16 a5\n");
}

TEST(NorvikLogFollow, EndsWhenNobodyReadsOn) {
  const TemporaryFolder folder;
  const std::string log = folder.write("pay.log", time + "one\n");
  FollowingReader reader({"-f", log});
  reader.readUntil("one");
  reader.closeOut();
  EXPECT_EQ(reader.waitForEnd(), 0);
}

TEST(NorvikLogFollow, AFolderOfMoreFilesThanAProcessMayOpenIsReadAndFollowed) {
  const TemporaryFolder folder;
  std::string all;
  const auto nameOf = [](int number) { return "log-000" + std::to_string(100 + number) + ".txt"; };
  const auto lineOf = [](int number, const std::string& text) {
    return "2021-05-10T13:" + std::to_string(10 + number / 10) + ":0" + std::to_string(number % 10) + "Z " + text +
           "\n";
  };
  for (int i = 0; i < 100; ++i) {
    folder.write(nameOf(i), lineOf(i, "file " + std::to_string(i)));
    all += lineOf(i, "file " + std::to_string(i));
  }
  FollowingReader reader({"-f", folder.path()}, [] {
    const rlimit limit{64, 64};
    ::setrlimit(RLIMIT_NOFILE, &limit);
  });
  EXPECT_EQ(reader.readUntil("file 99"), all);
  for (const int number : {0, 50, 99}) {
    const std::string more = lineOf(number, "more of " + std::to_string(number));
    std::ofstream(folder.path(nameOf(number)), std::ios::app) << more;
    EXPECT_EQ(reader.readUntil("more of"), more);
  }
  // An old file is renamed, and a new one is created.
  std::filesystem::rename(folder.path(nameOf(3)), folder.path("log-00AAAA.txt"));
  const std::string more = lineOf(3, "more of 3"), next = lineOf(100, "next");
  std::ofstream(folder.path("log-00AAAA.txt"), std::ios::app) << more;
  EXPECT_EQ(reader.readUntil("more of"), more);
  folder.write(nameOf(100), next);
  EXPECT_EQ(reader.readUntil("next"), next);
  reader.signal(SIGTERM);
  EXPECT_EQ(reader.readErrorToTheEnd(), "");
}

}  // namespace
}  // namespace norvik_log_test
