// The code in README.md and docs/ must be the code of the examples, which are compiled. The README's example prints
// what it says.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(Readme, ShowsTheExampleAsItIsCompiled) {
  const std::string example = readFile(README_EXAMPLE_SOURCE);
  ASSERT_FALSE(example.empty());
  EXPECT_NE(readFile(README_FILE).find("```cpp\n" + example + "```\n"), std::string::npos)
      << "README.md and examples/readme_example.cpp differ";
}

/// The code that the pages in docs/ show of each example, by the example's path: its blocks of code, one after the
/// other. A block belongs to the example that the page named last before the block.
std::map<std::string, std::string> shownCode() {
  std::map<std::string, std::string> shown;
  for (const auto& entry : std::filesystem::directory_iterator(PROJECT_FOLDER "/docs")) {
    if (entry.path().extension() != ".md") continue;
    std::string example, fence;
    std::istringstream page(readFile(entry.path()));
    for (std::string line; std::getline(page, line);) {
      if (line.starts_with("```")) {
        const bool begins = fence.empty();
        fence = begins ? line : "";
        // A block that is not C++ must name its language.
        const bool isKnown = line == "```cpp" || line == "```text" || line == "```sh";
        EXPECT_TRUE(!begins || isKnown) << entry.path() << ": " << line;
        if (line == "```cpp" && !shown[example].empty()) shown[example] += '\n';
      } else if (fence == "```cpp") {
        shown[example] += line + '\n';
      } else if (const std::size_t name = line.find("`examples/"); name != std::string::npos) {
        const std::size_t end = line.find('`', name + 1);
        const std::string path = line.substr(name + 1, end - name - 1);
        if (path.ends_with(".cpp")) example = path;
      }
    }
    EXPECT_EQ(fence, "") << entry.path() << " has a block without an end";
  }
  return shown;
}

/// The text after the comment at its beginning.
std::string withoutHead(std::string text) {
  while (text.starts_with("//")) text.erase(0, text.find('\n') + 1);
  return text;
}

// The example therefore compiles with only the headers that the page shows.
TEST(Documents, ShowTheBeginningOfAnExample) {
  const std::map<std::string, std::string> shown = shownCode();
  for (const auto& [example, code] : shown) {
    const std::string source = withoutHead(readFile(PROJECT_FOLDER "/" + example));
    ASSERT_FALSE(source.empty()) << "no example '" << example << "'";
    EXPECT_EQ(source.substr(0, code.size()), code) << example << " differs from what a page shows of it";
    EXPECT_TRUE(source.size() == code.size() || source.substr(code.size()).starts_with("\n// So far the page.\n"))
        << example;
  }
  std::vector<std::string> names;
  for (const auto& [example, code] : shown) names.push_back(example);
  const std::vector<std::string> expected{
      "examples/bindings/bindings.cpp",
      "examples/collections/collections.cpp",
      "examples/cookies/cookies.cpp",
      "examples/dates/dates.cpp",
      "examples/diagnostics/crash.cpp",
      "examples/diagnostics/diagnostics.cpp",
      "examples/dispatch/autosave.cpp",
      "examples/dispatch/glib_loop.cpp",
      "examples/dispatch/plain_loop.cpp",
      "examples/dispatch/qt_loop.cpp",
      "examples/drawing/drawing.cpp",
      "examples/environment/environment.cpp",
      "examples/logging/console.cpp",
      "examples/logging/databases.cpp",
      "examples/logging/logging.cpp",
      "examples/markup/markup.cpp",
      "examples/money/money.cpp",
      "examples/observation/observation.cpp",
      "examples/preferences/preferences.cpp",
      "examples/queries/queries.cpp",
      "examples/runtime/runtime.cpp",
      "examples/text/text.cpp",
  };
  EXPECT_EQ(names, expected);
}

TEST(Readme, TheExamplePrintsWhatItSays) {
  std::FILE* const program = ::popen(README_EXAMPLE_PROGRAM, "r");
  ASSERT_NE(program, nullptr);
  char output[256] = {};
  const std::size_t length = std::fread(output, 1, sizeof output, program);
  EXPECT_EQ(::pclose(program), 0);
  EXPECT_EQ(std::string(output, length), "30 April 2024: 2,000.00\n");
}

}  // namespace
