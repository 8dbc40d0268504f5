// programs/norvik-log/PostgresSource.h - the log that DDPostgreSQLLogger keeps on a server. libpq is loaded when it is
// first asked for.
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
  /// Connects when it is first read. What cannot be reached, or does not answer, is reported, without what could be a
  /// password, and has no messages.
  PostgresSource(const std::string& address, const Reading& reading);
  ~PostgresSource() override;

  bool next(Batch& batch) override;
  void lookAgain() override;
  void stop() noexcept override;

 private:
  struct Connection;

  /// Numbers are given before their entries are committed. A number up to this one can still come from these
  /// transactions only.
  struct Mark {
    std::int64_t number = 0;
    std::set<std::string> writers;
  };

  void begin();
  // These throw std::runtime_error, what() of which says why the server cannot be read.
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
  const std::string name_;  // where it is, without user and password
  FilterCheck check_;
  std::unique_ptr<Connection> connection_;
  bool isBegun_ = false;  // to be read
  const int stopping_;    // can be read once stop() was called; -1: there is none
  std::atomic<bool> isStopped_ = false;

  std::int64_t low_ = 0;           // up to this number all is read
  std::set<std::int64_t> read_;    // above it
  std::optional<Mark> mark_;       // to which low_ is raised when its writers have ended
  std::int64_t highest_ = 0;       // number at the last look
  std::string first_;              // number and time of the first entry then
  std::set<std::string> writers_;  // transactions that wrote then
  bool isBehind_ = true;           // the last reading did not come to its end
  bool isAtEnd_ = false;           // of this reading
  bool isFetching_ = false;        // rows of a fetch are still to be taken
  std::size_t fetched_ = 0;        // rows of it
  std::set<std::string> sources_;  // of the records

  bool wasConnected_ = false;
  bool isHopeless_ = false;     // another attempt would fail likewise
  bool isFailureSaid_ = false;  // since it was last read
  std::chrono::steady_clock::time_point nextTry_;
  std::chrono::seconds pause_{1};
};

/// The address, which has "://" in it, without user, password and options.
[[nodiscard]] std::string shownAddress(std::string_view address);

}  // namespace norvik_log
