#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using kernel::FileDescriptor;
using norvik::test::TemporaryFolder;

struct Pipe {
  Pipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    reader = FileDescriptor(ends[0]);
    writer = FileDescriptor(ends[1]);
  }
  FileDescriptor reader, writer;
};

bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

// The exit status of a child that runs `body`, or the negative number of the signal that ended it.
template <class Body>
int inChild(const Body& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

int writeBeyondSizeLimit(const std::string& path, std::size_t* written) {
  const rlimit limit{10, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
  FileDescriptor file;
  if (kernel::openFile(path, {.write = true}, file) != 0) return -1;
  return kernel::writeAll(file.get(), "0123456789abcdef", written);
}

TEST(FileDescriptor, HeaderExample) {
  const TemporaryFolder folder;
  const std::string path = folder.path("pay.txt"), text = "1,234.50\n";
  const auto save = [&]() -> int {
    FileDescriptor file;
    if (int error = kernel::openFile(path, {.write = true, .create = true}, file)) return error;
    if (int error = kernel::writeAll(file.get(), text)) return error;
    return file.close();
  };
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(folder.read(path), "1,234.50\n");
}

TEST(FileDescriptor, ClosesWhatItOwns) {
  const TemporaryFolder folder;
  int number = -1;
  {
    FileDescriptor file;
    ASSERT_EQ(kernel::openFile(folder.write("a"), {.read = true}, file), 0);
    number = file.get();
    EXPECT_TRUE(isOpen(number));
  }
  EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptor, MovingHandsTheDescriptorOn) {
  Pipe pipe;
  const int reader = pipe.reader.get(), writer = pipe.writer.get();
  pipe.writer = std::move(pipe.reader);
  EXPECT_EQ(pipe.writer.get(), reader);
  EXPECT_FALSE(pipe.reader.isOpen());  // NOLINT(bugprone-use-after-move): empty is what it promises to be
  EXPECT_FALSE(isOpen(writer));
}

TEST(FileDescriptor, ClosingTwiceClosesOnce) {
  Pipe pipe;
  EXPECT_EQ(pipe.reader.close(), 0);
  EXPECT_EQ(pipe.reader.close(), 0);
  EXPECT_EQ(pipe.reader.get(), -1);
}

TEST(FileDescriptor, OpeningRefusesWhatIsNotThere) {
  const TemporaryFolder folder;
  FileDescriptor file;
  EXPECT_EQ(kernel::openFile(folder.path("absent"), {.read = true}, file), ENOENT);
  EXPECT_EQ(kernel::openFile(folder.path("absent"), {.write = true}, file), ENOENT);
  EXPECT_EQ(kernel::openFile(folder.path(), {.write = true}, file), EISDIR);
  EXPECT_FALSE(file.isOpen());
}

TEST(FileDescriptor, APathWithAZeroByteNamesNothing) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a", "kept") + std::string("\0b", 2);
  FileDescriptor file;
  EXPECT_EQ(kernel::openFile(path, {.read = true}, file), ENOENT);
  EXPECT_EQ(kernel::openFile(path, {.write = true, .create = true, .exclusive = true}, file), ENOENT);
  EXPECT_EQ(kernel::openFile(path, {.write = true, .create = true, .truncate = true}, file), ENOENT);
  EXPECT_EQ(folder.read(folder.path("a")), "kept");
}

TEST(FileDescriptor, ExclusiveRefusesAFileThatExists) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a", "kept");
  FileDescriptor file;
  EXPECT_EQ(kernel::openFile(path, {.write = true, .create = true, .exclusive = true}, file), EEXIST);
  EXPECT_EQ(folder.read(path), "kept");
}

TEST(FileDescriptor, AppendingGoesToTheEndThatOthersMoved) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a", "one ");
  FileDescriptor first, second;
  ASSERT_EQ(kernel::openFile(path, {.append = true}, first), 0);
  ASSERT_EQ(kernel::openFile(path, {.append = true}, second), 0);
  EXPECT_EQ(kernel::writeAll(first.get(), "two "), 0);
  EXPECT_EQ(kernel::writeAll(second.get(), "three "), 0);
  EXPECT_EQ(kernel::writeAll(first.get(), "four"), 0);
  EXPECT_EQ(folder.read(path), "one two three four");
}

TEST(FileDescriptor, TruncatingEmptiesTheFile) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a", "old text");
  FileDescriptor file;
  ASSERT_EQ(kernel::openFile(path, {.write = true, .truncate = true}, file), 0);
  EXPECT_EQ(folder.read(path), "");
}

TEST(FileDescriptor, ADescriptorIsNotInherited) {
  const TemporaryFolder folder;
  FileDescriptor file;
  ASSERT_EQ(kernel::openFile(folder.write("a"), {.read = true}, file), 0);
  EXPECT_EQ(fcntl(file.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(FileDescriptor, AFileNeverBecomesAStandardStream) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a");
  const int number = inChild([&] {
    close(0);
    close(2);
    FileDescriptor file;
    if (kernel::openFile(path, {.write = true}, file) != 0) return 200;
    return isOpen(0) || isOpen(2) ? 201 : file.get();
  });
  EXPECT_GT(number, 2);
  EXPECT_LT(number, 200);
}

TEST(FileDescriptor, AWriteThatTheKernelCutsGoesOn) {
  Pipe pipe;  // it holds 64 KiB, so the rest must wait for the reader
  const std::string text(1'000'000, 'x');
  std::string received;
  std::thread reader([&] { EXPECT_EQ(kernel::readAll(pipe.reader.get(), received), 0); });
  std::size_t written = 0;
  EXPECT_EQ(kernel::writeAll(pipe.writer.get(), text, &written), 0);
  EXPECT_EQ(pipe.writer.close(), 0);
  reader.join();
  EXPECT_EQ(written, 1'000'000U);
  EXPECT_EQ(received, text);
}

TEST(FileDescriptor, AWriteToADescriptorThatDoesNotBlockWaitsForRoom) {
  Pipe pipe;
  ASSERT_EQ(fcntl(pipe.writer.get(), F_SETFL, O_NONBLOCK), 0);
  const std::string text(1'000'000, 'x');
  std::string received;
  std::thread reader([&] { EXPECT_EQ(kernel::readAll(pipe.reader.get(), received), 0); });
  EXPECT_EQ(kernel::writeAll(pipe.writer.get(), text), 0);
  EXPECT_EQ(pipe.writer.close(), 0);
  reader.join();
  EXPECT_EQ(received.size(), 1'000'000U);
}

TEST(FileDescriptor, AnInterruptedWriteBeginsAgain) {
  struct sigaction action {};
  action.sa_handler = [](int) {};  // without SA_RESTART
  struct sigaction before {};
  ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
  Pipe pipe;
  const std::string text(1'000'000, 'x');
  const pthread_t writer = pthread_self();
  std::string received;
  std::thread reader([&] {
    char part[4096];
    for (ssize_t count = 0; (count = read(pipe.reader.get(), part, sizeof part)) > 0;) {
      received.append(part, static_cast<std::size_t>(count));
      if (received.size() < text.size()) pthread_kill(writer, SIGUSR1);
    }
  });
  EXPECT_EQ(kernel::writeAll(pipe.writer.get(), text), 0);
  EXPECT_EQ(pipe.writer.close(), 0);
  reader.join();
  EXPECT_EQ(received, text);
  sigaction(SIGUSR1, &before, nullptr);
}

TEST(FileDescriptor, AWriteToAPipeNobodyReadsIsAnErrorAndNotDeadly) {
  const int status = inChild([] {
    signal(SIGPIPE, SIG_DFL);
    Pipe pipe;
    pipe.reader.close();
    return kernel::writeAll(pipe.writer.get(), "text");
  });
  EXPECT_EQ(status, EPIPE);
}

TEST(FileDescriptor, AWriteBeyondTheSizeLimitIsAnErrorAndNotDeadly) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a");
  EXPECT_EQ(inChild([&] {
              signal(SIGXFSZ, SIG_DFL);
              std::size_t written = 0;
              const int error = writeBeyondSizeLimit(path, &written);
              return written == 10 ? error : 200;
            }),
            EFBIG);
  EXPECT_EQ(folder.read(path), "0123456789");
}

TEST(FileDescriptor, ASignalOfTheProgramsOwnStaysDeadlyAfterwards) {
  const int status = inChild([] {
    signal(SIGPIPE, SIG_DFL);
    Pipe pipe;
    pipe.reader.close();
    if (kernel::writeAll(pipe.writer.get(), "text") != EPIPE) return 1;
    return static_cast<int>(write(pipe.writer.get(), "text", 4));  // a direct write without a guard
  });
  EXPECT_EQ(status, -SIGPIPE);
}

TEST(FileDescriptor, ASignalThatWasWaitingIsLeftWaiting) {
  const int status = inChild([] {
    sigset_t set, waiting;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    Pipe pipe;
    pipe.reader.close();
    const auto isWaiting = [&] {
      sigpending(&waiting);
      return sigismember(&waiting, SIGPIPE) == 1;
    };
    if (kernel::writeAll(pipe.writer.get(), "text") != EPIPE || isWaiting()) return 1;
    raise(SIGPIPE);
    if (kernel::writeAll(pipe.writer.get(), "text") != EPIPE) return 2;
    return isWaiting() ? 0 : 3;
  });
  EXPECT_EQ(status, 0);
}

TEST(FileDescriptor, AGuardCoversSeveralWrites) {
  const int status = inChild([] {
    signal(SIGPIPE, SIG_DFL);
    Pipe pipe;
    pipe.reader.close();
    {
      const kernel::WriteSignalGuard guard;
      for (int i = 0; i < 3; ++i) {
        if (kernel::writeAll(pipe.writer.get(), "text") != EPIPE) return 1;
      }
    }
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, SIGPIPE) == 1 ? 2 : 0;
  });
  EXPECT_EQ(status, 0);
}

TEST(FileDescriptor, AFullDiskIsAnError) {
  FileDescriptor full;
  ASSERT_EQ(kernel::openFile("/dev/full", {.write = true}, full), 0);
  std::size_t written = 9;
  EXPECT_EQ(kernel::writeAll(full.get(), "text", &written), ENOSPC);
  EXPECT_EQ(written, 0U);
}

TEST(FileDescriptor, NothingIsWrittenToWhatIsNotOpen) {
  EXPECT_EQ(kernel::writeAll(-1, "text"), EBADF);
  EXPECT_EQ(kernel::writeAll(-1, ""), 0);
}

TEST(FileDescriptor, AWholeFileIsRead) {
  const TemporaryFolder folder;
  const std::string content = std::string(200'000, 'a') + std::string("\0z", 2);
  std::string text = "before";
  EXPECT_EQ(kernel::readFile(folder.write("a", content), text), 0);
  EXPECT_EQ(text, content);
  EXPECT_EQ(kernel::readFile(folder.path("absent"), text), ENOENT);
  EXPECT_EQ(kernel::readFile(folder.path(), text), EISDIR);
  EXPECT_EQ(text, "");
}

TEST(FileDescriptor, OffsetsAreThoseOfTheFile) {
  const TemporaryFolder folder;
  FileDescriptor file;
  ASSERT_EQ(kernel::openFile(folder.write("a", "12345"), {.write = true}, file), 0);
  std::uint64_t offset = 99;
  EXPECT_EQ(kernel::offsetOf(file.get(), offset), 0);
  EXPECT_EQ(offset, 0U);
  EXPECT_EQ(kernel::seekToEnd(file.get(), offset), 0);
  EXPECT_EQ(offset, 5U);
  EXPECT_EQ(kernel::writeAll(file.get(), "678"), 0);
  EXPECT_EQ(kernel::offsetOf(file.get(), offset), 0);
  EXPECT_EQ(offset, 8U);
  EXPECT_EQ(kernel::seekTo(file.get(), 3), 0);
  EXPECT_EQ(kernel::offsetOf(file.get(), offset), 0);
  EXPECT_EQ(offset, 3U);
  EXPECT_EQ(kernel::seekTo(file.get(), UINT64_MAX), EINVAL);
  const Pipe pipe;
  EXPECT_EQ(kernel::offsetOf(pipe.reader.get(), offset), ESPIPE);
  EXPECT_EQ(kernel::seekToEnd(pipe.reader.get(), offset), ESPIPE);
}

TEST(FileDescriptor, SynchronizingIsFineWithAndWithoutADisk) {
  const TemporaryFolder folder;
  FileDescriptor file;
  ASSERT_EQ(kernel::openFile(folder.write("a", "12345"), {.write = true}, file), 0);
  EXPECT_EQ(kernel::synchronize(file.get()), 0);
  EXPECT_EQ(kernel::synchronize(Pipe().writer.get()), 0);
  EXPECT_EQ(kernel::synchronize(-1), EBADF);
}

TEST(FileDescriptor, WhereARegularFileIsAskedForNothingElseIsOpened) {
  const TemporaryFolder folder;
  folder.write("file", "text");
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo(folder.path("read pipe").c_str(), 0600), 0);
  ASSERT_EQ(mkdir(folder.path("folder").c_str(), 0700), 0);
  ASSERT_EQ(symlink("file", folder.path("link").c_str()), 0);
  ASSERT_EQ(symlink("nowhere", folder.path("dangling").c_str()), 0);
  const FileDescriptor reader(open(folder.path("read pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  ASSERT_TRUE(reader.isOpen());
  const struct {
    std::string path;
    int error;
  } rows[] = {
      {folder.path("file"), 0},         {folder.path("pipe"), ENXIO}, {folder.path("read pipe"), ENXIO},
      {folder.path("folder"), EISDIR},  {folder.path("link"), ELOOP}, {folder.path("dangling"), ELOOP},
      {folder.path("missing"), ENOENT}, {"/dev/urandom", ENXIO},
  };
  for (const auto& row : rows) {
    FileDescriptor file;
    EXPECT_EQ(kernel::openFile(row.path, {.append = true, .regular = true}, file), row.error) << row.path;
    EXPECT_EQ(file.isOpen(), row.error == 0) << row.path;
    if (!file.isOpen()) continue;
    EXPECT_EQ(fcntl(file.get(), F_GETFL) & (O_NONBLOCK | O_APPEND), O_APPEND);
  }
  ASSERT_EQ(symlink(".", folder.path("here").c_str()), 0);
  FileDescriptor file;
  EXPECT_EQ(kernel::openFile(folder.path("here/file"), {.append = true, .regular = true}, file), 0);
}

TEST(FileDescriptor, ReadingAtAPlaceMovesNothing) {
  const TemporaryFolder folder;
  FileDescriptor file;
  ASSERT_EQ(kernel::openFile(folder.write("a", "12345"), {.read = true, .write = true}, file), 0);
  char bytes[4] = {};
  std::size_t count = 9;
  EXPECT_EQ(kernel::readAt(file.get(), 1, bytes, 3, &count), 0);
  EXPECT_EQ(std::string(bytes, count), "234");
  EXPECT_EQ(kernel::readAt(file.get(), 3, bytes, 4, &count), 0);
  EXPECT_EQ(std::string(bytes, count), "45");
  EXPECT_EQ(kernel::readAt(file.get(), 5, bytes, 4, &count), 0);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(kernel::readAt(Pipe().reader.get(), 0, bytes, 4, &count), ESPIPE);
  kernel::awaitOtherWrites(file.get());
  std::uint64_t offset = 99;
  EXPECT_EQ(kernel::offsetOf(file.get(), offset), 0);
  EXPECT_EQ(offset, 0U);
  EXPECT_EQ(TemporaryFolder::read(folder.path("a")), "12345");
}

}  // namespace
}  // namespace norvik
