// The code in README.md and docs/ must be the code of the examples, which are compiled. The README's example prints
// what it says.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
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

std::vector<std::filesystem::path> pages() {
  std::vector<std::filesystem::path> pages;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(PROJECT_FOLDER "/docs"))
    if (entry.path().extension() == ".md") pages.push_back(entry.path());
  return pages;
}

/// The code that a page shows of each example, by the example's path: its blocks of code, one after the other. A block
/// belongs to the example that the page named last before the block.
std::map<std::string, std::string> shownCode(const std::vector<std::filesystem::path>& pages) {
  std::map<std::string, std::string> shown;
  for (const std::filesystem::path& path : pages) {
    std::string example, fence;
    std::istringstream page(readFile(path));
    for (std::string line; std::getline(page, line);) {
      if (line.starts_with("```")) {
        const bool begins = fence.empty();
        fence = begins ? line : "";
        // A block that is not C++ must name its language.
        const bool isKnown = line == "```cpp" || line == "```text" || line == "```sh" || line == "```cmake";
        EXPECT_TRUE(!begins || isKnown) << path << ": " << line;
        if (line == "```cpp" && !shown[example].empty()) shown[example] += '\n';
      } else if (fence == "```cpp") {
        shown[example] += line + '\n';
      } else if (const std::size_t name = line.find("`examples/"); name != std::string::npos) {
        const std::size_t end = line.find('`', name + 1);
        const std::string file = line.substr(name + 1, end - name - 1);
        if (file.ends_with(".cpp") || file.ends_with(".h")) example = file;
      }
    }
    EXPECT_EQ(fence, "") << path << " has a block without an end";
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
  const std::map<std::string, std::string> shown = shownCode(pages());
  for (const auto& [example, code] : shown) {
    const std::string source = withoutHead(readFile(PROJECT_FOLDER "/" + example));
    ASSERT_FALSE(source.empty()) << "no example '" << example << "'";
    EXPECT_EQ(source.substr(0, code.size()), code) << example << " differs from what a page shows of it";
    EXPECT_TRUE(source.size() == code.size() || source.substr(code.size()).starts_with("\n// So far the page.\n"))
        << example;
  }
  // Every example is on a page. The pay run and the window are programs of their own, and the README shows its example
  // whole.
  std::set<std::string> names, expected;
  for (const auto& [example, code] : shown) names.insert(example);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(PROJECT_FOLDER "/examples")) {
    const std::string file = std::filesystem::relative(entry.path(), PROJECT_FOLDER).string();
    const bool isExample = (file.ends_with(".cpp") || file.ends_with(".h")) && !file.starts_with("examples/payrun/") &&
                           !file.starts_with("examples/payroll-desk/") && file != "examples/readme_example.cpp";
    if (isExample) expected.insert(file);
  }
  EXPECT_GT(expected.size(), 30U);
  EXPECT_EQ(names, expected);
}

TEST(Documents, EachHasCompiledCodeThatBeginsWithItsIncludes) {
  for (const std::filesystem::path& page : pages()) {
    const std::map<std::string, std::string> shown = shownCode({page});
    EXPECT_FALSE(shown.empty()) << page << " has no block of code";
    for (const auto& [example, code] : shown)
      EXPECT_TRUE(code.starts_with("#include ") || code.starts_with("#pragma once\n")) << page << ": " << example;
  }
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
