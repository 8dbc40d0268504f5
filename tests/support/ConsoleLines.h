// tests/support/ConsoleLines.h - captures the lines that a part of a test writes to the system console, without the
// time and the process at the beginning of each line.
//
//   EXPECT_THAT(consoleOf([&] { save("text"); }), IsEmpty());
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace norvik::test {

template <class Work>
std::vector<std::string> consoleOf(Work work) {
  ::testing::internal::CaptureStderr();
  work();
  std::istringstream console(::testing::internal::GetCapturedStderr());
  std::vector<std::string> lines;
  for (std::string line; std::getline(console, line);) lines.push_back(line.substr(line.find("] ") + 2));
  return lines;
}

}  // namespace norvik::test
