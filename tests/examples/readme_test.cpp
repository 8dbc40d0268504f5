// The code in README.md and docs/ is the code of the examples, which are compiled; the README's prints what it says.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

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

/// A line of code without indentation and without the remark at its end.
std::string code(std::string line) {
  line.erase(0, line.find_first_not_of(' '));
  if (const std::size_t remark = line.find("  //"); remark != std::string::npos) line.erase(remark);
  return line;
}

TEST(Documents, ShowOnlyCodeOfTheExampleThatTheyName) {
  const std::string names = "The code below is";
  std::size_t pages = 0;
  for (const auto& entry : std::filesystem::directory_iterator(PROJECT_FOLDER "/docs")) {
    const std::string page = readFile(entry.path());
    const std::size_t named = page.find(names);
    if (named == std::string::npos) {
      const bool hasCode = page.find("```cpp") != std::string::npos;
      EXPECT_EQ(hasCode, entry.path().filename() == "dispatch.md")  // which names several: dispatch_examples_test.cpp
          << entry.path() << " shows code of no example";
      continue;
    }
    ++pages;
    const std::size_t begin = page.find('`', named) + 1;
    const std::string example = page.substr(begin, page.find('`', begin) - begin);
    std::set<std::string> known;
    std::istringstream source(readFile(PROJECT_FOLDER "/" + example));
    for (std::string line; std::getline(source, line);) known.insert(code(line));
    ASSERT_GT(known.size(), 1U) << example;
    bool inside = false;
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("```")) {
        inside = line == "```cpp";
      } else if (inside) {
        EXPECT_TRUE(known.contains(code(line)))
            << entry.path() << " shows a line that " << example << " has not: " << line;
      }
    }
  }
  EXPECT_GE(pages, 3U);
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
