// The loops that docs/dispatch.md shows are what examples/dispatch compiles, and they work.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// What it prints; ends with the exit code unless that is 0.
std::string outputOf(const std::string& program) {
  std::FILE* const pipe = ::popen(("'" + program + "'").c_str(), "r");
  if (pipe == nullptr) return "cannot be started";
  char output[256] = {};
  const std::size_t length = std::fread(output, 1, sizeof output, pipe);
  const int code = ::pclose(pipe);
  return std::string(output, length) + (code == 0 ? "" : "exit code " + std::to_string(code));
}

TEST(Loops, ThePageShowsThemAsTheyAreCompiled) {
  const std::string page = readFile(DISPATCH_PAGE);
  for (const char* name : {"plain_loop.cpp", "glib_loop.cpp", "qt_loop.cpp"}) {
    const std::string source = readFile(std::string(LOOP_SOURCES) + "/" + name);
    const std::string mark = "  // The loop.\n";
    const std::size_t begin = source.find(mark);
    ASSERT_NE(begin, std::string::npos) << name;
    const std::string shown = source.substr(begin + mark.size());
    EXPECT_NE(page.find("```cpp\n" + shown + "```\n"), std::string::npos) << name;
  }
}

TEST(Loops, OfOnesOwnRunsTheMainQueue) { EXPECT_EQ(outputOf(PLAIN_LOOP_PROGRAM), "40 employees\n"); }

#ifdef GLIB_LOOP_PROGRAM
TEST(Loops, OfGLibRunsTheMainQueue) { EXPECT_EQ(outputOf(GLIB_LOOP_PROGRAM), "40 employees\n"); }
#endif

#ifdef QT_LOOP_PROGRAM
TEST(Loops, OfQtRunsTheMainQueue) { EXPECT_EQ(outputOf(QT_LOOP_PROGRAM), "40 employees\n"); }
#endif

}  // namespace
