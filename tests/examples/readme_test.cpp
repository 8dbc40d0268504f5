// The code on the README's first screen is what examples/readme_example.cpp compiles, and prints what it says.
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

TEST(Readme, ShowsTheExampleAsItIsCompiled) {
  const std::string example = readFile(README_EXAMPLE_SOURCE);
  ASSERT_FALSE(example.empty());
  EXPECT_NE(readFile(README_FILE).find("```cpp\n" + example + "```\n"), std::string::npos)
      << "README.md and examples/readme_example.cpp differ";
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
