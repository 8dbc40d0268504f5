// tests/examples/payrun/PayrunProgram.h - runs the pay run as a user does, in separate folders.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace payrun_test {

using norvik::test::TemporaryFolder;

struct Result {
  int status = -1;  // the exit status, or 128 plus the signal that ended it
  std::string out, err;
  double cpuSeconds = 0;
  double peakMebibytes = 0;
};

/// Runs it with these arguments, an empty standard input and `home` as its home folder. Waits for its end.
Result runPayrun(const TemporaryFolder& home, const std::vector<std::string>& arguments,
                 const std::string& locale = "en_GB.UTF-8");
/// The same with standard error on a terminal. `err` is the terminal's text.
Result runPayrunOnTerminal(const TemporaryFolder& home, const std::vector<std::string>& arguments);

/// The same with standard output on a terminal of `columns` columns. `out` is the terminal's text, with line feeds at
/// the ends of lines. The environment variables are set; an empty one is removed.
Result runPayrunPrintingOnTerminal(const TemporaryFolder& home, const std::vector<std::string>& arguments,
                                   unsigned short columns,
                                   const std::vector<std::pair<std::string, std::string>>& variables);

/// A pay run with `--watch`. The test reads its output while it runs, and ends it by a signal.
class WatchingPayrun {
 public:
  WatchingPayrun(const TemporaryFolder& home, const std::vector<std::string>& arguments);
  /// Ends it by SIGKILL if it is still running.
  ~WatchingPayrun();
  WatchingPayrun(const WatchingPayrun&) = delete;
  WatchingPayrun& operator=(const WatchingPayrun&) = delete;

  /// Its standard output since the last call, up to and including the next line that contains `text`. Throws after 30
  /// seconds without such a line.
  std::string readUntil(const std::string& text);
  /// The same on standard error.
  std::string readErrorUntil(const std::string& text);
  /// Closes the reading end of its standard output.
  void closeOut();
  /// The processor time that it has used, in steps of a hundredth of a second.
  [[nodiscard]] double cpuSeconds() const;
  /// Sends the signal and waits for the end. `out` and `err` are the output that was not read yet.
  Result stop(int signal);
  /// Waits until the program ends by itself.
  Result waitForEnd();

 private:
  pid_t child_ = -1;
  int out_ = -1, err_ = -1;
  std::string pendingOut_, pendingErr_;
};

/// The folder of the example employer, and the folder of the expected reports.
std::filesystem::path exampleEmployer();
std::filesystem::path expectedReports();

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& text);
/// The content of all log files of a folder.
std::string readLogs(const std::filesystem::path& folder);
std::vector<std::string> linesOf(const std::string& text);
/// The first line in which the texts differ, as in both texts; empty if they are equal.
std::string firstDifference(const std::string& actual, const std::string& expected);

}  // namespace payrun_test
