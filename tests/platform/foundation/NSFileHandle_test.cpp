#include "NorvikCore/platform/foundation/NSFileHandle.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using norvik::test::TemporaryFolder;

// The reason of the file handle's exception raised by `body`.
template <class Body>
NSString reasonOf(const Body& body) {
  try {
    body();
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), "NSFileHandleOperationException");
    return exception.reason();
  }
  return "nothing was raised";
}

TEST(NSFileHandle, HeaderExample) {
  const TemporaryFolder folder;
  const std::string path = folder.write("log.txt", "a line\n");
  if (Ref<NSFileHandle> file = NSFileHandle::fileHandleForAppendingAtPath(path)) {
    file->writeData("one more line\n");
    file->synchronizeFile();
  }
  EXPECT_EQ(folder.read(path), "a line\none more line\n");
}

TEST(NSFileHandle, WritingBeginsAtTheBeginningAndOverwrites) {
  const TemporaryFolder folder;
  const std::string path = folder.write("log.txt", "abcdef");
  const Ref<NSFileHandle> file = NSFileHandle::fileHandleForWritingAtPath(path);
  EXPECT_EQ(file->offsetInFile(), 0U);
  file->writeData(*NSData::dataWithText("XY"));
  EXPECT_EQ(file->offsetInFile(), 2U);
  EXPECT_EQ(folder.read(path), "XYcdef");
}

TEST(NSFileHandle, SeekingMovesTheNextWrite) {
  const TemporaryFolder folder;
  const std::string path = folder.write("log.txt", "abcdef");
  const Ref<NSFileHandle> file = NSFileHandle::fileHandleForWritingAtPath(path);
  EXPECT_EQ(file->seekToEndOfFile(), 6U);
  file->writeData("!");
  file->seekToFileOffset(1);
  file->writeData("B");
  EXPECT_EQ(folder.read(path), "aBcdef!");
}

TEST(NSFileHandle, TwoAppendingHandlesLoseNothing) {
  const TemporaryFolder folder;
  const std::string path = folder.write("log.txt");
  const Ref<NSFileHandle> a = NSFileHandle::fileHandleForAppendingAtPath(path);
  const Ref<NSFileHandle> b = NSFileHandle::fileHandleForAppendingAtPath(path);
  a->writeData("a1 ");
  b->writeData("b1 ");
  a->writeData("a2 ");
  EXPECT_EQ(folder.read(path), "a1 b1 a2 ");
  EXPECT_EQ(a->offsetInFile(), 9U);
  EXPECT_EQ(b->offsetInFile(), 6U);
}

TEST(NSFileHandle, ReadingGivesTheRest) {
  const TemporaryFolder folder;
  const Ref<NSFileHandle> file =
      NSFileHandle::fileHandleForReadingAtPath(folder.write("pay.csv", std::string("12\0 34", 6)));
  file->seekToFileOffset(1);
  EXPECT_EQ(file->readDataToEndOfFile()->text(), std::string("2\0 34", 5));
  EXPECT_EQ(file->readDataToEndOfFile()->length(), 0U);
}

TEST(NSFileHandle, WhatCannotBeOpenedIsAnEmptyRef) {
  const TemporaryFolder folder;
  EXPECT_FALSE(NSFileHandle::fileHandleForWritingAtPath(folder.path("absent")));
  EXPECT_FALSE(NSFileHandle::fileHandleForAppendingAtPath(folder.path()));
  EXPECT_FALSE(NSFileHandle::fileHandleForReadingAtPath(""));
  EXPECT_FALSE(NSFileHandle::fileHandleForWritingAtPath(NSString(folder.write("a") + std::string("\0b", 2))));
}

TEST(NSFileHandle, AFullDiskIsAnExceptionThatNamesTheFile) {
  const Ref<NSFileHandle> full = NSFileHandle::fileHandleForWritingAtPath("/dev/full");
  EXPECT_EQ(reasonOf([&] { full->writeData("text"); }), "NSFileHandle writeData: /dev/full: No space left on device");
}

TEST(NSFileHandle, AHandleOpenedForReadingDoesNotWrite) {
  const TemporaryFolder folder;
  const Ref<NSFileHandle> file = NSFileHandle::fileHandleForReadingAtPath(folder.write("a"));
  EXPECT_TRUE(reasonOf([&] { file->writeData("text"); }).hasSuffix("/a: Bad file descriptor"));
}

TEST(NSFileHandle, AClosedHandleRefusesEverything) {
  const TemporaryFolder folder;
  const Ref<NSFileHandle> file = NSFileHandle::fileHandleForWritingAtPath(folder.write("a"));
  file->closeFile();
  file->closeFile();
  EXPECT_EQ(file->fileDescriptor(), -1);
  EXPECT_TRUE(reasonOf([&] { file->writeData("text"); }).hasPrefix("NSFileHandle writeData: "));
  EXPECT_TRUE(reasonOf([&] { file->writeData(""); }).hasPrefix("NSFileHandle writeData: "));
  EXPECT_TRUE(reasonOf([&] { (void)file->offsetInFile(); }).hasPrefix("NSFileHandle offsetInFile: "));
  EXPECT_TRUE(reasonOf([&] { file->seekToEndOfFile(); }).hasPrefix("NSFileHandle seekToEndOfFile: "));
  EXPECT_TRUE(reasonOf([&] { file->seekToFileOffset(0); }).hasPrefix("NSFileHandle seekToFileOffset: "));
  EXPECT_TRUE(reasonOf([&] { file->synchronizeFile(); }).hasPrefix("NSFileHandle synchronizeFile: "));
  EXPECT_TRUE(reasonOf([&] { (void)file->readDataToEndOfFile(); }).hasPrefix("NSFileHandle readDataToEndOfFile: "));
}

TEST(NSFileHandle, APipeHasNoOffset) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe(ends), 0);
  const kernel::FileDescriptor reader(ends[0]);
  const auto writer = make<NSFileHandle>(kernel::FileDescriptor(ends[1]), "a pipe");
  EXPECT_EQ(reasonOf([&] { (void)writer->offsetInFile(); }), "NSFileHandle offsetInFile: a pipe: Illegal seek");
}

TEST(NSFileHandle, TheFileIsClosedWithTheObject) {
  const TemporaryFolder folder;
  Ref<NSFileHandle> file = NSFileHandle::fileHandleForReadingAtPath(folder.write("a"));
  const int descriptor = file->fileDescriptor();
  file = nullptr;
  EXPECT_LT(lseek(descriptor, 0, SEEK_CUR), 0);
}

// In a child process, because the limit cannot be raised again.
TEST(NSFileHandle, ALimitOfTheFilesSizeIsAnExceptionAndNotDeadly) {
  const TemporaryFolder folder;
  const std::string path = folder.write("a");
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_DFL);
    const rlimit limit{3, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const Ref<NSFileHandle> file = NSFileHandle::fileHandleForWritingAtPath(path);
    _exit(reasonOf([&] { file->writeData("text"); }).hasSuffix("/a: File too large") ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(folder.read(path), "tex");
}

}  // namespace
}  // namespace norvik
