// tests/examples/payrun/PayrunProgram.h - runs the pay run as a user does, in folders of its own.
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

/// The same with standard output on a terminal of so many columns, whose text is `out` with its lines ended by line
/// feeds, and with these environment variables; an empty one is removed.
Result runPayrunPrintingOnTerminal(const TemporaryFolder& home, const std::vector<std::string>& arguments,
                                   unsigned short columns,
                                   const std::vector<std::pair<std::string, std::string>>& variables);

/// One that stays: started with `--watch`, read as it goes on, ended by a signal.
class WatchingPayrun {
 public:
  WatchingPayrun(const TemporaryFolder& home, const std::vector<std::string>& arguments);
  /// Ends it by SIGKILL where nobody stopped it.
  ~WatchingPayrun();
  WatchingPayrun(const WatchingPayrun&) = delete;
  WatchingPayrun& operator=(const WatchingPayrun&) = delete;

  /// What it printed on standard output since the last call, up to and with the next line that contains `text`; throws
  /// after 30 seconds without one.
  std::string readUntil(const std::string& text);
  /// The same on standard error.
  std::string readErrorUntil(const std::string& text);
  /// From now on nobody reads its standard output.
  void closeOut();
  /// The processor time it has used, to the hundredth of a second.
  [[nodiscard]] double cpuSeconds() const;
  /// Sends the signal and waits for the end; `out` and `err` are what nobody read yet.
  Result stop(int signal);
  /// Waits for the end that comes by itself.
  Result waitForEnd();

 private:
  pid_t child_ = -1;
  int out_ = -1, err_ = -1;
  std::string pendingOut_, pendingErr_;
};

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
