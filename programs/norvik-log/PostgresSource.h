// programs/norvik-log/PostgresSource.h - the log that DDPostgreSQLLogger writes to a server. libpq is loaded at the
// first use.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "DatabaseEntry.h"
#include "FileSource.h"

namespace norvik_log {

class PostgresSource : public DatabaseSource {
 public:
  /// Connects at the first read. A server that cannot be reached or does not answer is reported and has no messages.
  /// The report contains nothing that may be a password.
  PostgresSource(const std::string& address, const Reading& reading);
  ~PostgresSource() override;

  bool next(Batch& batch) override;
  void lookAgain() override;
  void stop() noexcept override;

 private:
  struct Connection;

  /// Entries get their numbers before they are committed. After the look that made this mark, only these transactions
  /// can still add entries with numbers up to this one.
  struct Mark {
    std::int64_t number = 0;
    std::set<std::string> writers;
  };

  void begin();
  // These throw std::runtime_error; what() gives the reason why the server cannot be read.
  void connect();
  void beginReading();
  void readRows(Batch& batch);
  void endReading();

  void fail(std::string_view reason);
  [[nodiscard]] std::string declaration() const;
  [[nodiscard]] bool isNew(std::int64_t number);
  [[nodiscard]] std::string_view sourceOf(std::string_view machine, std::string_view program, std::string_view process);

  const std::string address_;
  const Reading& reading_;
  const std::string name_;  // the address without user and password
  FilterCheck check_;
  std::unique_ptr<Connection> connection_;
  bool isBegun_ = false;  // begin() was called
  const int stopping_;    // readable after stop(); -1: it could not be created
  std::atomic<bool> isStopped_ = false;

  std::int64_t low_ = 0;           // all entries up to this number were read
  std::set<std::int64_t> read_;    // numbers above low_ that were read
  std::optional<Mark> mark_;       // low_ is raised to this mark when its writers have ended
  std::int64_t highest_ = 0;       // the highest number at the last look
  std::string first_;              // the number and the time of the first entry at the last look
  std::set<std::string> writers_;  // the transactions that were writing at the last look
  bool isBehind_ = true;           // the last reading did not reach its end
  bool isAtEnd_ = false;           // this reading has reached its end
  bool isFetching_ = false;        // the current fetch has unread rows
  std::size_t fetched_ = 0;        // the rows of the current fetch so far
  std::set<std::string> sources_;  // the sources of records, to which they refer

  bool wasConnected_ = false;
  bool isHopeless_ = false;     // another attempt would fail in the same way
  bool isFailureSaid_ = false;  // a failure was reported since the last complete reading
  std::chrono::steady_clock::time_point nextTry_;
  std::chrono::seconds pause_{1};
};

/// The address, which contains "://", without user, password and options.
[[nodiscard]] std::string shownAddress(std::string_view address);

}  // namespace norvik_log
