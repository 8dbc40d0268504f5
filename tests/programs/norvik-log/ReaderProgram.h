// tests/programs/norvik-log/ReaderProgram.h - runs norvik-log as a user does.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace norvik_log_test {

/// A log of one message.
inline const std::string errorLine = "2021-05-10T13:00:00.000Z ERROR   [main:7] a.cpp:1  first\n";

struct Result {
  int status = -1;  // the exit status, or 128 plus the signal that ended it
  std::string out, err;
  long peakKibibytes = 0;  // of memory, if it was measured
};

using Variables = std::vector<std::pair<std::string, std::string>>;

/// Waits for its end. `input` is its standard input. The zone is London's unless a variable sets another one.
Result runReader(const std::vector<std::string>& arguments, const std::string& input = "",
                 const Variables& variables = {});
/// The same. `prepare` runs in its process before the program begins.
Result runReaderPrepared(const std::vector<std::string>& arguments, const std::function<void()>& prepare);
/// The same, and measures its memory.
Result measureReader(const std::vector<std::string>& arguments);
/// With standard output on a terminal of `columns` columns.
Result runReaderOnTerminal(const std::vector<std::string>& arguments, unsigned short columns,
                           const Variables& variables = {});

/// A reader with --follow.
class FollowingReader {
 public:
  enum class Out { Pipe, Terminal };
  explicit FollowingReader(const std::vector<std::string>& arguments, const std::function<void()>& prepare = {},
                           Out out = Out::Pipe);
  /// Ends the program.
  ~FollowingReader();
  FollowingReader(const FollowingReader&) = delete;
  FollowingReader& operator=(const FollowingReader&) = delete;

  /// Its output since the last call, up to and including the next line that contains `text`. Throws after 30 seconds.
  std::string readUntil(const std::string& text);
  std::string readErrorUntil(const std::string& text);
  /// Its output since the last call, until its standard output is closed.
  std::string readToTheEnd();
  /// Closes the reading end of its standard output.
  void closeOut();
  void signal(int number);
  /// The largest amount of memory that it has used so far.
  [[nodiscard]] long peakKibibytes() const;
  /// Waits until it ends by itself. Returns its exit status, or 128 plus the signal that ended it.
  int waitForEnd();
  /// The same; returns the signal that ended it, or 0.
  int waitForSignal();
  /// The same; returns its standard error since the last readErrorUntil().
  std::string readErrorToTheEnd();

 private:
  pid_t child_ = -1;
  int out_ = -1, err_ = -1;
  std::string pendingOut_, pendingErr_;
};

}  // namespace norvik_log_test
