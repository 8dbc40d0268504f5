// NorvikCore/logging/internal/LogRecordPool.h - the records of log calls: one piece of memory, used round and round.
//
// Every page of it is touched when it is made, so that no call meets a page that is not there yet. A thread goes
// through some records that lie together before it asks for others, so that threads meet there rarely. There are more
// records than messages may wait; a record is still in use when it is its turn only where others are freed out of turn.
//
// Threads: synchronised; a Cursor is one thread's.
#pragma once

#include "NorvikCore/logging/internal/LogRecord.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik::detail {

class LogRecordPool {
 public:
  static constexpr std::size_t count = 1024;

  /// Where a thread stands in the pool, in any pool.
  struct Cursor {
    std::uint32_t next = 0;
  };

  /// The next record; null where that is still in use.
  [[nodiscard]] LogRecord* take(Cursor& cursor) noexcept {
    if (cursor.next % atOnce == 0) [[unlikely]]
      cursor.next = next_.fetch_add(atOnce, std::memory_order_relaxed);
    LogRecord& record = records_[cursor.next++ % count];
    return record.claim() ? &record : nullptr;
  }

  /// Asks for the memory of the record that take() will probably give.
  void prefetch(const Cursor& cursor) const noexcept { records_[cursor.next % count].prefetch(); }

  /// True while a record is out.
  [[nodiscard]] bool isInUse() const noexcept {
    for (const LogRecord& record : records_) {
      if (record.inUse_.load(std::memory_order_relaxed)) return true;
    }
    return false;
  }

 private:
  static constexpr std::uint32_t atOnce = 8;

  alignas(64) std::atomic<std::uint32_t> next_{0};
  LogRecord records_[count];
};

}  // namespace norvik::detail
