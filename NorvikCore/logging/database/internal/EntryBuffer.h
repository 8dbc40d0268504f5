// NorvikCore/logging/database/internal/EntryBuffer.h - a buffer of entries for a database: their numbers, and copies of
// their texts in valid UTF-8.
//
//   EntryBuffer buffer(16 << 20);
//   if (buffer.add(entry, formatter) == EntryBuffer::Outcome::noRoom) ++lost;
//   buffer.forEach([](const StoredEntry& stored) { insert(stored); return true; });
//   buffer.clear();
//
// Bytes that are not UTF-8 become U+FFFD, because a database would refuse the whole batch for one of them. A buffer is
// full when its bytes have reached its limit, so it always has room for one entry.
//
// Threads: confined.
#pragma once

#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::detail {

struct StoredEntry {
  double time;  // seconds since 1970-01-01 UTC, from storedSeconds()
  std::int32_t level, context, line;
  std::uint32_t thread;
  std::string_view queue;
  std::string_view file, function;  // with a null data() if there is none
  std::string_view text;
};

class NK_EXPORT EntryBuffer {
 public:
  enum class Outcome : std::uint8_t { taken, dropped, noRoom };

  explicit EntryBuffer(std::size_t limit) noexcept : limit_(limit) {}

  /// The formatter may be null. `dropped` means that the formatter dropped the message. `noRoom` also means that there
  /// was no memory.
  [[nodiscard]] Outcome add(const DDLogEntry& entry, DDLogFormatter* formatter);
  [[nodiscard]] Outcome add(const DDLogMessage& message, DDLogFormatter* formatter);

  [[nodiscard]] std::size_t count() const noexcept { return rows_.size(); }
  /// The bytes of memory that the entries take.
  [[nodiscard]] std::size_t bytes() const noexcept { return texts_.size() + rows_.size() * sizeof(Row); }
  [[nodiscard]] std::size_t limit() const noexcept { return limit_; }
  void setLimit(std::size_t bytes) noexcept { limit_ = bytes; }
  [[nodiscard]] bool isFull() const noexcept { return count() > 0 && bytes() >= limit_; }

  /// Calls `use(const StoredEntry&)` for each entry, in the order of their arrival, until it returns false. Returns the
  /// last result.
  template <class Use>
  bool forEach(Use use) const {
    const char* text = texts_.data();
    for (const Row& row : rows_) {
      if (!use(stored(row, text))) return false;
    }
    return true;
  }
  /// Removes all entries. Keeps the memory unless it is unusually large.
  void clear();

 private:
  static constexpr std::uint32_t absent = UINT32_MAX;
  struct Row {
    double time;
    std::int32_t level, context, line;
    std::uint32_t thread, queueSize, fileSize, functionSize;
    std::size_t textSize;
  };

  template <class Source>
  Outcome addFrom(const Source& source, DDLogFormatter* formatter);
  template <class Source>
  Outcome append(const Source& source, DDLogFormatter* formatter);
  [[nodiscard]] std::uint32_t append(const char* text);
  [[nodiscard]] std::uint32_t append(std::string_view text);
  [[nodiscard]] std::size_t cleanFrom(std::size_t begin);
  [[nodiscard]] static StoredEntry stored(const Row& row, const char*& text) {
    StoredEntry entry{row.time, row.level, row.context, row.line, row.thread, {}, {}, {}, {}};
    const auto take = [&text](std::string_view& view, std::size_t size) {
      view = {text, size};
      text += size;
    };
    take(entry.queue, row.queueSize);
    if (row.fileSize != absent) take(entry.file, row.fileSize);
    if (row.functionSize != absent) take(entry.function, row.functionSize);
    take(entry.text, row.textSize);
    return entry;
  }

  std::size_t limit_;
  std::vector<Row> rows_;
  std::string texts_;  // the queue, file, function and text of each row
};

}  // namespace norvik::detail
