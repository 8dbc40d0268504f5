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
  int status = -1;  // 128 plus the signal where one ended it
  std::string out, err;
  long peakKibibytes = 0;  // of memory, where it was measured
};

using Variables = std::vector<std::pair<std::string, std::string>>;

/// Waits for its end. `input` is on its standard input; the zone is London's unless a variable says otherwise.
Result runReader(const std::vector<std::string>& arguments, const std::string& input = "",
                 const Variables& variables = {});
/// The same; `prepare` runs in its process before it begins.
Result runReaderPrepared(const std::vector<std::string>& arguments, const std::function<void()>& prepare);
/// The same, with its memory.
Result measureReader(const std::vector<std::string>& arguments);
/// With standard output on a terminal of so many columns.
Result runReaderOnTerminal(const std::vector<std::string>& arguments, unsigned short columns,
                           const Variables& variables = {});

/// One that follows.
class FollowingReader {
 public:
  enum class Out { Pipe, Terminal };
  explicit FollowingReader(const std::vector<std::string>& arguments, const std::function<void()>& prepare = {},
                           Out out = Out::Pipe);
  /// Ends it.
  ~FollowingReader();
  FollowingReader(const FollowingReader&) = delete;
  FollowingReader& operator=(const FollowingReader&) = delete;

  /// What it printed since the last call, up to and with the next line that contains `text`; throws after 30 seconds.
  std::string readUntil(const std::string& text);
  std::string readErrorUntil(const std::string& text);
  /// What it printed since the last call, until its standard output is closed.
  std::string readToTheEnd();
  /// From now on nobody reads what it prints.
  void closeOut();
  void signal(int number);
  /// The most memory that it had so far.
  [[nodiscard]] long peakKibibytes() const;
  /// Waits for the end that comes by itself; 128 plus the signal where one ended it.
  int waitForEnd();
  /// The same; the signal that ended it, 0 where none did.
  int waitForSignal();
  /// The same; what it printed to standard error since the last readErrorUntil().
  std::string readErrorToTheEnd();

 private:
  pid_t child_ = -1;
  int out_ = -1, err_ = -1;
  std::string pendingOut_, pendingErr_;
};

}  // namespace norvik_log_test
