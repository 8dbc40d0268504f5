#include "NorvikCore/platform/kernel/GatherWrite.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>
#include <cerrno>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using kernel::awaitRoom;
using kernel::mayBlock;
using kernel::writeGathered;

std::int64_t inSeconds(std::int64_t seconds) { return kernel::monotonicNanoseconds() + seconds * 1'000'000'000; }

class OpenPipe {
 public:
  explicit OpenPipe(int flags = 0) { EXPECT_EQ(pipe2(ends_, flags), 0); }
  ~OpenPipe() {
    closeReader();
    close(ends_[1]);
  }
  OpenPipe(const OpenPipe&) = delete;
  OpenPipe& operator=(const OpenPipe&) = delete;

  [[nodiscard]] int writer() const { return ends_[1]; }
  [[nodiscard]] std::string read(std::size_t most) const {
    std::string bytes(most, '\0');
    const ssize_t count = ::read(ends_[0], bytes.data(), most);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }
  void closeReader() {
    if (ends_[0] >= 0) close(std::exchange(ends_[0], -1));
  }

 private:
  int ends_[2] = {-1, -1};
};

TEST(GatherWrite, HeaderExample) {
  const OpenPipe pipe;
  const std::string_view time = "12:00:00", text = "40 payslips";
  const std::string_view line[] = {time, " ", text, "\n"};
  std::size_t written = 0;
  const std::int64_t deadline = kernel::monotonicNanoseconds() + 1'000'000'000;
  EXPECT_EQ(kernel::writeGathered(pipe.writer(), line, deadline, written), 0);
  EXPECT_EQ(written, 21U);
  EXPECT_EQ(pipe.read(100), "12:00:00 40 payslips\n");
}

TEST(GatherWrite, ThePiecesArriveInOrderAndAreCounted) {
  const OpenPipe pipe;
  const std::string_view line[] = {"12:00", " ", "", "net pay", "\n"};
  std::size_t written = 99;
  EXPECT_EQ(writeGathered(pipe.writer(), line, inSeconds(1), written), 0);
  EXPECT_EQ(written, 14U);
  EXPECT_EQ(pipe.read(100), "12:00 net pay\n");
}

TEST(GatherWrite, NothingIsWrittenWithoutPieces) {
  const OpenPipe pipe(O_NONBLOCK);
  std::size_t written = 99;
  EXPECT_EQ(writeGathered(pipe.writer(), {}, inSeconds(1), written), 0);
  EXPECT_EQ(written, 0U);
  EXPECT_EQ(pipe.read(100), "");
}

TEST(GatherWrite, SixteenPiecesAreTakenAndSeventeenRefused) {
  const OpenPipe pipe(O_NONBLOCK);
  const std::vector<std::string_view> pieces(17, "p");
  std::size_t written = 99;
  EXPECT_EQ(writeGathered(pipe.writer(), std::span(pieces).first(16), inSeconds(1), written), 0);
  EXPECT_EQ(pipe.read(100), std::string(16, 'p'));
  EXPECT_EQ(writeGathered(pipe.writer(), pieces, inSeconds(1), written), EINVAL);
  EXPECT_EQ(written, 0U);
  EXPECT_EQ(pipe.read(100), "");
}

TEST(GatherWrite, WhatAPipeThatDoesNotBlockLeavesFollowsOnceThereIsRoom) {
  OpenPipe pipe(O_NONBLOCK);
  const std::string first(100'000, 'a'), last(100'000, 'z');
  const std::string_view pieces[] = {first, last};
  std::string received;
  std::thread reader([&] {
    while (received.size() < 200'000) {
      const std::string bytes = pipe.read(7'000);
      if (bytes.empty()) std::this_thread::yield();
      received += bytes;
    }
  });
  std::size_t written = 0;
  EXPECT_EQ(writeGathered(pipe.writer(), pieces, inSeconds(60), written), 0);
  reader.join();
  EXPECT_EQ(written, 200'000U);
  EXPECT_EQ(received, first + last);
}

TEST(GatherWrite, AFullPipeThatDoesNotBlockTimesOutWithWhatCameThrough) {
  const OpenPipe pipe(O_NONBLOCK);
  const int room = fcntl(pipe.writer(), F_SETPIPE_SZ, 8192);
  ASSERT_EQ(room, 8192);
  const std::string text(10'000, 'x');
  const std::string_view pieces[] = {text};
  std::size_t written = 0;
  const std::int64_t begin = kernel::monotonicNanoseconds();
  EXPECT_EQ(writeGathered(pipe.writer(), pieces, begin + 50'000'000, written), ETIMEDOUT);
  EXPECT_GE(kernel::monotonicNanoseconds() - begin, 50'000'000);
  EXPECT_EQ(written, 8192U);
}

TEST(GatherWrite, ARefusalIsAnErrorNumber) {
  OpenPipe pipe;
  pipe.closeReader();
  const std::string_view pieces[] = {"text"};
  std::size_t written = 99;
  EXPECT_EQ(writeGathered(pipe.writer(), pieces, inSeconds(1), written), EPIPE);  // and no SIGPIPE
  EXPECT_EQ(written, 0U);
  EXPECT_EQ(writeGathered(-1, pieces, inSeconds(1), written), EBADF);
}

TEST(GatherWrite, AFileAtItsGreatestSizeIsAnErrorNumber) {
  const test::TemporaryFolder folder;
  const int file = open(folder.write("line").c_str(), O_WRONLY);
  ASSERT_GE(file, 0);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit tight = before;
  tight.rlim_cur = 6;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
  const std::string_view pieces[] = {"net ", "pay"};
  std::size_t written = 0;
  EXPECT_EQ(writeGathered(file, pieces, inSeconds(1), written), EFBIG);  // and no SIGXFSZ
  EXPECT_EQ(written, 6U);
  setrlimit(RLIMIT_FSIZE, &before);
  close(file);
}

TEST(GatherWrite, RoomIsThereUntilAPipeIsFull) {
  const OpenPipe pipe(O_NONBLOCK);
  EXPECT_TRUE(awaitRoom(pipe.writer(), 0));
  const std::string block(4096, 'x');
  while (write(pipe.writer(), block.data(), block.size()) > 0) {
  }
  EXPECT_FALSE(awaitRoom(pipe.writer(), 0));
  const std::int64_t begin = kernel::monotonicNanoseconds();
  EXPECT_FALSE(awaitRoom(pipe.writer(), begin + 50'000'000));
  EXPECT_GE(kernel::monotonicNanoseconds() - begin, 50'000'000);
  EXPECT_EQ(pipe.read(4096), block);
  EXPECT_TRUE(awaitRoom(pipe.writer(), 0));
}

TEST(GatherWrite, ADescriptorThatRefusesIsNotWaitedFor) {
  OpenPipe pipe;
  pipe.closeReader();
  EXPECT_TRUE(awaitRoom(pipe.writer(), inSeconds(600)));
  EXPECT_TRUE(awaitRoom(9'999, inSeconds(600)));
}

TEST(MayBlock, AnEmptyPipeTakesWhatFits) {
  const OpenPipe pipe;
  ASSERT_EQ(fcntl(pipe.writer(), F_SETPIPE_SZ, 8192), 8192);
  EXPECT_FALSE(mayBlock(pipe.writer(), 1));
  EXPECT_FALSE(mayBlock(pipe.writer(), 8192));
  EXPECT_TRUE(mayBlock(pipe.writer(), 8193));
  ASSERT_EQ(write(pipe.writer(), "x", 1), 1);
  EXPECT_TRUE(mayBlock(pipe.writer(), 1));
}

TEST(MayBlock, NeitherFilesNorClosedDescriptorsNorThoseThatDoNotBlockDo) {
  const test::TemporaryFolder folder;
  const int file = open(folder.write("line").c_str(), O_WRONLY);
  ASSERT_GE(file, 0);
  EXPECT_FALSE(mayBlock(file, 1'000'000'000));
  close(file);
  EXPECT_FALSE(mayBlock(-1, 1));
  const OpenPipe pipe(O_NONBLOCK);
  ASSERT_EQ(write(pipe.writer(), "x", 1), 1);
  EXPECT_FALSE(mayBlock(pipe.writer(), 1'000'000'000));
}

TEST(MayBlock, ATerminalMay) {
  int controller = -1, terminal = -1;
  ASSERT_EQ(openpty(&controller, &terminal, nullptr, nullptr, nullptr), 0);
  EXPECT_TRUE(mayBlock(terminal, 1));
  close(terminal);
  close(controller);
}

}  // namespace
}  // namespace norvik
