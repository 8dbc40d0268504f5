// tests/examples/payrun/PayrunProgram.h - runs the pay run as a user does, in folders of its own.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace payrun_test {

using norvik::test::TemporaryFolder;

struct Result {
  int status = -1;  // the exit status; 128 plus the signal where one ended it
  std::string out, err;
  double cpuSeconds = 0;
  double peakMebibytes = 0;
};

/// Runs it with these arguments, nothing on its standard input and its home in `home`; waits for its end.
Result runPayrun(const TemporaryFolder& home, const std::vector<std::string>& arguments,
                 const std::string& locale = "en_GB.UTF-8");
/// The same with standard error on a terminal, whose text is `err`.
Result runPayrunOnTerminal(const TemporaryFolder& home, const std::vector<std::string>& arguments);

/// The folder of the example employer, and of the reports expected for it.
std::filesystem::path exampleEmployer();
std::filesystem::path expectedReports();

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& text);
/// Everything in the log files of a folder.
std::string readLogs(const std::filesystem::path& folder);
std::vector<std::string> linesOf(const std::string& text);
/// The first line in which the texts differ, as both have it; empty where they are the same.
std::string firstDifference(const std::string& actual, const std::string& expected);

}  // namespace payrun_test
