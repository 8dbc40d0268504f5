// programs/norvik-log/DatabaseEntry.h - an entry of a log in a database, converted to a line of DDLogLineFormatter.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Batch.h"
#include "Filter.h"
#include "LogSource.h"

namespace norvik_log {

/// The start of 0001-01-01 and the end of 9999-12-31.
inline constexpr std::int64_t earliestTime = -62135596800000, latestTime = 253402300799999;

struct DatabaseEntry {
  std::int64_t time = 0;  // milliseconds since 1970, UTC, from earliestTime to latestTime
  int flag = 0;
  std::string_view queue, thread, file, text;  // UTF-8; empty: unknown
  int line = 0;
};

/// A line such as 2021-05-10T13:30:12.045Z WARN    [com.norvik.main-thread:4711] PayRun.cpp:42  text, with escapes.
[[nodiscard]] std::string lineOf(const DatabaseEntry& entry);

/// Adds the entry if the filter admits it.
void addEntry(const DatabaseEntry& entry, FilterCheck& check, std::string_view source, Batch& batch);

/// A log in a database. The entries of a server come by time. Those of an SQLite database come in the order of their
/// numbers, or by time if the filter has times. Used by one thread at a time.
class DatabaseSource : public LogSource {
 public:
  /// Makes next() look for entries that were added since it returned false.
  virtual void lookAgain() = 0;
  /// Called before the destructor, from any thread. A call that waits for a server's answer then returns without the
  /// answer.
  virtual void stop() noexcept {}
};

}  // namespace norvik_log
