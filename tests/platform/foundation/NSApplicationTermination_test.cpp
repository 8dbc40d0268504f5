#include "NorvikCore/platform/foundation/NSApplicationTermination.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

// The words written by a program that ends in the given way, one for each event. TerminationProgram.cpp defines the
// ways.
std::string wordsOf(const char* way, int expectedStatus = 0) {
  const norvik::test::TemporaryFolder folder;
  const std::string path = folder.path("words");
  const pid_t child = fork();
  if (child == 0) {
    execl(NORVIK_TERMINATION_PROGRAM, NORVIK_TERMINATION_PROGRAM, way, path.c_str(), nullptr);
    _exit(99);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status)) << way << " ended by signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), expectedStatus) << way;
  return folder.read(path);
}

TEST(NSApplicationTermination, TheNotificationHasItsName) {
  EXPECT_EQ(NSApplicationWillTerminateNotification, "NSApplicationWillTerminateNotification");
}

TEST(NSApplicationTermination, HeaderExample) { EXPECT_EQ(wordsOf("return"), "posted static-destroyed flushed "); }

TEST(NSApplicationTermination, ExitPostsTheNotificationToo) {
  EXPECT_EQ(wordsOf("exit"), "posted static-destroyed flushed ");
}

TEST(NSApplicationTermination, ExitOnAnotherThreadPostsItToo) {
  EXPECT_EQ(wordsOf("exit-on-thread"), "posted static-destroyed flushed ");
}

TEST(NSApplicationTermination, WhatTheApplicationPostedIsNotPostedAgain) {
  EXPECT_EQ(wordsOf("posted-by-application"), "posted returns static-destroyed flushed ");
}

TEST(NSApplicationTermination, APostInAnotherCenterIsNotTheApplications) {
  EXPECT_EQ(wordsOf("posted-in-other-center"), "returns posted static-destroyed flushed ");
}

TEST(NSApplicationTermination, WithoutANotificationCenterTheEndIsStillTold) {
  EXPECT_EQ(wordsOf("no-center"), "static-destroyed flushed ");
}

TEST(NSApplicationTermination, AnObserversExceptionIsReportedAndTheProcessEnds) {
  const std::string words = wordsOf("observer-raises");  // includes the output on the console
  EXPECT_TRUE(words.starts_with("posted ")) << words;
  EXPECT_TRUE(
      words.ends_with("] An observer of NSApplicationWillTerminateNotification raised PayrollException: closed\n"
                      "static-destroyed flushed "))
      << words;
}

TEST(NSApplicationTermination, AnObserverThatEndsTheProcessIsNotCalledAgain) {
  EXPECT_EQ(wordsOf("observer-exits", 3), "posted static-destroyed flushed ");
}

TEST(NSApplicationTermination, AForkedChildEndsWithoutPostingAndItsParentWithIt) {
  EXPECT_EQ(wordsOf("forked-child"), "child-begins static-destroyed child-ended posted static-destroyed flushed ");
}

TEST(NSApplicationTermination, AChildThatIsTheFirstToUseTheCenterPosts) {
  EXPECT_EQ(wordsOf("service"), "posted static-destroyed flushed ");
}

TEST(NSApplicationTermination, EndFunctionsAreCalledInTheOrderInWhichTheyWereAskedFor) {
  EXPECT_EQ(wordsOf("two-end-functions"), "static-destroyed flushed flushed-too ");
}

TEST(NSApplicationTermination, AnAbruptEndTellsNobody) { EXPECT_EQ(wordsOf("abrupt"), ""); }

}  // namespace
}  // namespace norvik
