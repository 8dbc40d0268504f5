// The code that docs/dispatch.md shows is what examples/dispatch compiles, and it works.
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

TEST(DispatchExamples, ThePageShowsThemAsTheyAreCompiled) {
  const std::string page = readFile(DISPATCH_PAGE);
  const struct {
    const char *name, *begin, *end;
  } rows[] = {{"autosave.cpp", "// The class.\n", "// So far the class.\n"},
              {"plain_loop.cpp", "  // The loop.\n", nullptr},
              {"glib_loop.cpp", "  // The loop.\n", nullptr},
              {"qt_loop.cpp", "  // The loop.\n", nullptr}};
  for (const auto& row : rows) {
    const std::string source = readFile(std::string(DISPATCH_EXAMPLES) + "/" + row.name);
    const std::size_t mark = source.find(row.begin);
    ASSERT_NE(mark, std::string::npos) << row.name;
    const std::size_t begin = mark + std::string(row.begin).size();
    const std::size_t end = row.end == nullptr ? source.rfind("}\n") : source.find(row.end);
    ASSERT_NE(end, std::string::npos) << row.name;
    EXPECT_NE(page.find("```cpp\n" + source.substr(begin, end - begin) + "```\n"), std::string::npos) << row.name;
  }
}

TEST(DispatchExamples, AutosaveSavesOnceForABurstOfChangesAndWhatIsLeftAtTheEnd) {
  EXPECT_EQ(outputOf(AUTOSAVE_PROGRAM), "saved: Ann 20 Bob 38\nreport: Ann 20 Bob 38\nsaved: Ann 20 Bob 40\n");
}

TEST(DispatchExamples, ALoopOfOnesOwnRunsTheMainQueue) { EXPECT_EQ(outputOf(PLAIN_LOOP_PROGRAM), "40 employees\n"); }

#ifdef GLIB_LOOP_PROGRAM
TEST(DispatchExamples, TheLoopOfGLibRunsTheMainQueue) { EXPECT_EQ(outputOf(GLIB_LOOP_PROGRAM), "40 employees\n"); }
#endif

#ifdef QT_LOOP_PROGRAM
TEST(DispatchExamples, TheLoopOfQtRunsTheMainQueue) { EXPECT_EQ(outputOf(QT_LOOP_PROGRAM), "40 employees\n"); }
#endif

}  // namespace
