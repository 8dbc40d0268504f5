#include "NorvikCore/platform/kernel/SystemLog.h"

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "NorvikCore/platform/kernel/Clock.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using kernel::SystemLogCapture;
using kernel::writeSystemLog;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

// The content of the file that is the standard error of a child process that runs `body`.
template <class Body>
std::string standardErrorOf(const Body& body) {
  const norvik::test::TemporaryFolder folder;
  const std::string path = folder.write("stderr");
  const pid_t child = fork();
  if (child == 0) {
    const int file = open(path.c_str(), O_WRONLY | O_APPEND);
    if (file < 0 || dup2(file, STDERR_FILENO) < 0) _exit(1);
    body();
    _exit(0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  return folder.read(path);
}

TEST(SystemLog, HeaderExample) {
  const std::string line = standardErrorOf([] { writeSystemLog("Unable to open the employer's folder"); });
  EXPECT_THAT(line, MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}[+]0000 "
                                 "kernel_tests\\[[0-9]+:[0-9]+\\] Unable to open the employer's folder\n"));
}

TEST(SystemLog, ALineCarriesTheTimeInUTC) {
  const std::int64_t before = kernel::wallNanoseconds() / 1'000'000;
  const std::string line = standardErrorOf([] { writeSystemLog("text"); });
  const std::int64_t after = kernel::wallNanoseconds() / 1'000'000;
  tm fields{};
  const char* rest = strptime(line.c_str(), "%Y-%m-%d %H:%M:%S", &fields);
  ASSERT_NE(rest, nullptr);
  const std::int64_t written = std::int64_t{timegm(&fields)} * 1000 + std::stoi(rest + 1);
  EXPECT_GE(written, before);
  EXPECT_LE(written, after);
}

TEST(SystemLog, ALineFeedAtTheEndIsNotDoubled) {
  const std::string text = standardErrorOf([] {
    writeSystemLog("one\n");
    writeSystemLog("two");
    writeSystemLog("");
  });
  EXPECT_THAT(text, MatchesRegex(".*\\] one\n2.*\\] two\n2.*\\] \n"));
}

TEST(SystemLog, AVeryLongLineIsWrittenWhole) {
  const std::string text = standardErrorOf([] { writeSystemLog(std::string(1'000'000, 'x') + "end"); });
  EXPECT_TRUE(text.ends_with("xend\n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), 'x'), 1'000'000);
}

TEST(SystemLog, LinesOfSeveralThreadsDoNotMix) {
  const std::string text = standardErrorOf([] {
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c', 'd'}) {
      threads.emplace_back([letter] {
        for (int i = 0; i < 100; ++i) writeSystemLog(std::string(200, letter));
      });
    }
    for (std::thread& thread : threads) thread.join();
  });
  std::size_t lines = 0;
  for (std::size_t at = 0, end; (end = text.find('\n', at)) != text.npos; at = end + 1, ++lines) {
    const std::string line = text.substr(at, end - at);
    ASSERT_EQ(line.substr(line.find("] ") + 2), std::string(200, line.back()));
  }
  EXPECT_EQ(lines, 400U);
}

TEST(SystemLog, AClosedStandardErrorDoesNoHarm) {
  const pid_t child = fork();
  if (child == 0) {
    close(STDERR_FILENO);
    writeSystemLog("nobody hears this");
    _exit(0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(SystemLog, AReaderThatIsGoneDoesNoHarm) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGPIPE, SIG_DFL);
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0) _exit(1);
    close(ends[0]);
    writeSystemLog("nobody hears this");
    _exit(0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(SystemLog, AFullPipeThatDoesNotBlockIsNotWaitedForForEver) {
  const pid_t child = fork();
  if (child == 0) {
    int ends[2];
    if (pipe2(ends, O_NONBLOCK) != 0 || dup2(ends[1], STDERR_FILENO) < 0) _exit(1);
    writeSystemLog(std::string(200'000, 'x'));
    _exit(0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(SystemLog, AFullPipeThatBlocksIsNotWaitedForForEver) {
  const pid_t child = fork();
  if (child == 0) {
    int ends[2];
    if (pipe2(ends, O_NONBLOCK) != 0) _exit(1);
    const std::string block(4096, 'x');
    while (write(ends[1], block.data(), block.size()) > 0) {
    }
    if (fcntl(ends[1], F_SETFL, 0) != 0 || dup2(ends[1], STDERR_FILENO) < 0) _exit(1);
    alarm(60);
    writeSystemLog("nobody reads this");
    _exit(0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(SystemLog, ErrnoStaysAsItWas) {
  const SystemLogCapture capture;
  errno = ENOTDIR;
  writeSystemLog("text");
  EXPECT_EQ(errno, ENOTDIR);
  standardErrorOf([] {
    close(STDERR_FILENO);
    errno = ENOTDIR;
    writeSystemLog("text");
    if (errno != ENOTDIR) _exit(1);
  });
}

TEST(SystemLog, ACaptureTakesTheTextsOfAllThreads) {
  SystemLogCapture capture;
  writeSystemLog("one");
  std::thread([] { writeSystemLog("two\n"); }).join();
  EXPECT_THAT(capture.lines(), ElementsAre("one", "two"));
}

TEST(SystemLog, TheLatestOfSeveralCapturesTakesTheText) {
  const SystemLogCapture outer;
  {
    const SystemLogCapture inner;
    writeSystemLog("to the inner one");
    EXPECT_THAT(inner.lines(), ElementsAre("to the inner one"));
  }
  writeSystemLog("to the outer one");
  EXPECT_THAT(outer.lines(), ElementsAre("to the outer one"));
}

TEST(SystemLog, AfterTheLastCaptureStandardErrorHasTheTextAgain) {
  const std::string text = standardErrorOf([] {
    { const SystemLogCapture capture; }
    writeSystemLog("back again");
  });
  EXPECT_TRUE(text.ends_with("] back again\n"));
}

TEST(SystemLog, AChildWritesAndReadsUnderACaptureThatThreadsOfItsParentUse) {
  const SystemLogCapture capture;
  std::atomic<bool> stop{false};
  std::atomic<int> reading{0};
  const auto read = [&] {
    EXPECT_FALSE(capture.waitForLines(2, 0));
    ++reading;
    while (!stop) EXPECT_FALSE(capture.waitForLines(2, 0));
  };
  std::thread readers[] = {std::thread(read), std::thread(read), std::thread(read), std::thread(read)};
  while (reading < 4) std::this_thread::yield();  // after this they allocate nothing
  int failed = 0;
  for (int round = 0; round < 300 && failed == 0; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(10);
      writeSystemLog("of the child");
      _exit(capture.lines() == std::vector<std::string>{"of the child"} && capture.waitForLines(1) ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    failed += status != 0;
  }
  stop = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(failed, 0);
}

TEST(SystemLog, ACaptureCanBeWaitedFor) {
  const SystemLogCapture capture;
  EXPECT_FALSE(capture.waitForLines(1, 0));
  std::thread writer([] { writeSystemLog("late"); });
  EXPECT_TRUE(capture.waitForLines(1));
  writer.join();
}

}  // namespace
}  // namespace norvik
