// tests/programs/norvik-log/norvik_log_signal_test.cpp - the state that the reader leaves when a signal ends it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "tests/programs/norvik-log/ReaderProgram.h"
#include "tests/programs/norvik-log/UnreadPipe.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log_test {
namespace {

using norvik::test::TemporaryFolder;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// Ends without a core file.
void keepNoCore() {
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

class NorvikLogSignal : public testing::TestWithParam<int> {};

TEST_P(NorvikLogSignal, EndsOneThatFollowsWithTheTerminalsColoursOff) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", errorLine);
  FollowingReader reader({"-f", "--color", "always", log}, keepNoCore, FollowingReader::Out::Terminal);
  EXPECT_THAT(reader.readUntil("first"), HasSubstr("\x1b[1;31mERROR"));
  reader.signal(GetParam());
  EXPECT_EQ(reader.readToTheEnd(), "\x1b[0m");
  EXPECT_EQ(reader.waitForSignal(), GetParam());
}

TEST_P(NorvikLogSignal, EndsOneInTheMiddleOfALineWithTheTerminalsColoursOff) {
  const TemporaryFolder folder;
  std::string text;
  while (text.size() < 1'000'000) text += errorLine;
  FollowingReader reader({"--color", "always", folder.write("a.log", text)}, keepNoCore,
                         FollowingReader::Out::Terminal);
  reader.readUntil("first");  // the rest does not fit into the terminal's buffer
  reader.signal(GetParam());
  EXPECT_THAT(reader.readToTheEnd(), EndsWith("\x1b[0m"));
  EXPECT_EQ(reader.waitForSignal(), GetParam());
}

TEST_P(NorvikLogSignal, LeavesNoDraftOfAPage) {
  const TemporaryFolder folder;
  const std::string pipe = folder.path("in"), page = folder.write("page.html", "former");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  FollowingReader reader({"--html", page, pipe}, keepNoCore);
  const int end = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC);  // returns when the reader has opened it, after the page
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("in", "page.html", StartsWith("page.html.part-")));
  reader.signal(GetParam());
  EXPECT_EQ(reader.waitForSignal(), GetParam());
  ::close(end);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("in", "page.html"));
  EXPECT_EQ(TemporaryFolder::read(page), "former");
}

INSTANTIATE_TEST_SUITE_P(Each, NorvikLogSignal, testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM),
                         [](const auto& each) { return std::string(::sigabbrev_np(each.param)); });

TEST(NorvikLogSignals, APipeOfErrorsThatNobodyReadsLeavesNoDraft) {
  const TemporaryFolder folder;
  FollowingReader reader({"--html", folder.path("page.html"), folder.path("gone")},
                         [] { becomeUnreadPipe(STDERR_FILENO); });
  EXPECT_EQ(reader.waitForSignal(), SIGPIPE);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(NorvikLogSignals, OneThatIsIgnoredStaysIgnored) {
  const TemporaryFolder folder;
  const std::string log = folder.write("a.log", errorLine);
  FollowingReader reader({"-f", log}, [] { ::signal(SIGHUP, SIG_IGN); });
  reader.readUntil("first");
  reader.signal(SIGHUP);
  folder.write("a.log", errorLine + "2021-05-10T13:00:01.000Z ERROR   [main:7] a.cpp:1  second\n");
  EXPECT_THAT(reader.readUntil("second"), HasSubstr("second\n"));
  reader.signal(SIGTERM);
  EXPECT_EQ(reader.waitForSignal(), SIGTERM);
}

}  // namespace
}  // namespace norvik_log_test
