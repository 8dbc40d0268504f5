// The examples in docs/dispatch.md work.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

/// The output of the program. If the exit code is not 0, it is at the end.
std::string outputOf(const std::string& program) {
  std::FILE* const pipe = ::popen(("'" + program + "'").c_str(), "r");
  if (pipe == nullptr) return "cannot be started";
  char output[256] = {};
  const std::size_t length = std::fread(output, 1, sizeof output, pipe);
  const int code = ::pclose(pipe);
  return std::string(output, length) + (code == 0 ? "" : "exit code " + std::to_string(code));
}

TEST(DispatchExamples, AutosaveSavesOnceForABurstOfChangesAndWhatIsLeftAtTheEnd) {
  EXPECT_EQ(outputOf(AUTOSAVE_PROGRAM), "saved: Ann 20 Bob 38\nreport: Ann 20 Bob 38\nsaved: Ann 20 Bob 40\n");
}

TEST(DispatchExamples, ACoroutineComputesOnAQueueAndShowsOnTheMainThread) {
  EXPECT_EQ(outputOf(COROUTINE_PROGRAM), "Ann: 2000.00\nBob: 1440.00\ntotal: 3440.00\n");
}

TEST(DispatchExamples, ALoopOfOnesOwnRunsTheMainQueue) { EXPECT_EQ(outputOf(PLAIN_LOOP_PROGRAM), "40 employees\n"); }

#ifdef GLIB_LOOP_PROGRAM
TEST(DispatchExamples, TheLoopOfGLibRunsTheMainQueue) { EXPECT_EQ(outputOf(GLIB_LOOP_PROGRAM), "40 employees\n"); }
#endif

#ifdef QT_LOOP_PROGRAM
TEST(DispatchExamples, TheLoopOfQtRunsTheMainQueue) { EXPECT_EQ(outputOf(QT_LOOP_PROGRAM), "40 employees\n"); }
#endif

}  // namespace
