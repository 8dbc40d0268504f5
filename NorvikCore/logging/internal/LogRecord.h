// NorvikCore/logging/internal/LogRecord.h - what an asynchronous log call leaves for the logging queue: who called,
// when, and copies of the format's arguments. The text is formed on the logging queue.
//
// A record is an item of that queue. It holds what a DDLogMessage is made of, in one piece of memory: first what every
// call has, then, as long as each of them is, the rest. The caller writes it from its start to its end and touches no
// other memory for it.
//
//   LogRecord* record = pool.take();
//   if (!record->fill(...)) ...                   // too much for its size: a larger one from the heap
//   ...
//   record->appendText(line);
//   record->dispose();
//
// Threads: confined; the caller's until it is queued, then the queue's.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/platform/dispatch/Item.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/internal/Prefetch.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/internal/FormatCopy.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace norvik::detail {

/// Who calls, and when.
struct LogCaller {
  static constexpr std::size_t readable = 32;

  std::int64_t wallNanoseconds;
  std::uint32_t threadId, threadNameSize, queueLabelSize;
  const char* names;  // the thread's, then the queue's label; the first `readable` bytes can be read in any case
  [[nodiscard]] std::size_t namesSize() const noexcept { return std::size_t{threadNameSize} + queueLabelSize; }
};

/// What a log call says: a format that can wait, and arguments for it. The tag may be null.
struct LogContent {
  std::string_view format;
  FormatArguments arguments;
  const Value* tag;
};

class alignas(64) LogRecord final : public Item {
 public:
  static constexpr std::size_t pooledSize = 256;

  LogRecord() noexcept = default;
  LogRecord(const LogRecord&) = delete;
  LogRecord& operator=(const LogRecord&) = delete;

  /// Copies all that is given. False, with nothing noted, where that is more than the record holds.
  [[nodiscard, gnu::always_inline]] bool fill(const LogSite& site, const LogCaller& caller,
                                              const LogContent& content) noexcept {
    return fillWithin(room_ + sizeof room_, site, caller, content);
  }

  /// A record from the heap that holds all of it.
  [[nodiscard]] static LogRecord* filledOnHeap(const LogSite& site, const LogCaller& caller, const LogContent& content);

  [[nodiscard]] const LogSite& site() const noexcept { return site_; }
  [[nodiscard]] Date timestamp() const noexcept;
  [[nodiscard]] std::uint32_t threadId() const noexcept { return threadId_; }
  [[nodiscard]] std::string_view threadName() const noexcept { return {names(), threadNameSize_}; }
  [[nodiscard]] std::string_view queueLabel() const noexcept { return {names() + threadNameSize_, queueLabelSize_}; }
  [[nodiscard]] bool hasTag() const noexcept { return tag_ != nullptr; }
  [[nodiscard]] Value tag() const { return tag_ ? *tag_ : Value(); }
  [[nodiscard]] NSString text() const;
  /// Appends the text as UTF-8.
  void appendText(std::string& line) const;

  bool hasPermit = false;  // one of those of the bound on messages that wait; the dispatcher's

  /// Lets go of what it holds, and gives it back to where it came from.
  void dispose() noexcept;
  /// The same for a record that was not filled.
  NK_EXPORT void giveBack() noexcept;

 private:
  friend class LogRecordPool;

  /// Asks for its memory, which is about to be written.
  void prefetch() const noexcept {
    for (std::size_t at = 0; at < pooledSize; at += 64)
      kernel::prefetchForWrite(reinterpret_cast<const char*>(this) + at);
  }
  [[nodiscard]] bool claim() noexcept { return !inUse_.exchange(true, std::memory_order_acquire); }

  [[gnu::always_inline]] bool fillWithin(char* end, const LogSite& site, const LogCaller& caller,
                                         const LogContent& content) noexcept;
  [[nodiscard]] FormatArguments arguments() const noexcept {
    return {reinterpret_cast<const FormatArgument*>(room_), argumentCount_};
  }
  [[nodiscard]] const char* names() const noexcept { return room_ + argumentCount_ * sizeof(FormatArgument); }

  std::atomic<bool> inUse_{false};
  bool onHeap_ = false;
  std::uint16_t argumentCount_ = 0;
  LogSite site_{};
  std::int64_t wallNanoseconds_ = 0;
  std::uint32_t threadId_ = 0, threadNameSize_ = 0, queueLabelSize_ = 0, formatSize_ = 0;
  const char* format_ = nullptr;
  Value* tag_ = nullptr;
  // The arguments' copies, the thread's name, the queue's label, the tag, and what the copies refer to.
  alignas(FormatArgument) char room_[152];
};
static_assert(sizeof(LogRecord) == LogRecord::pooledSize);

inline bool LogRecord::fillWithin(char* end, const LogSite& site, const LogCaller& caller,
                                  const LogContent& content) noexcept {
  argumentCount_ = static_cast<std::uint16_t>(content.arguments.size());
  site_.level = site.level;  // member by member, as the call site has just stored them (FormatCopy.h)
  site_.flag = site.flag;
  site_.context = site.context;
  site_.line = site.line;
  site_.file = site.file;
  site_.function = site.function;
  wallNanoseconds_ = caller.wallNanoseconds;
  threadId_ = caller.threadId;
  threadNameSize_ = caller.threadNameSize;
  queueLabelSize_ = caller.queueLabelSize;
  formatSize_ = static_cast<std::uint32_t>(content.format.size());
  format_ = content.format.data();
  tag_ = nullptr;

  const std::size_t copiesSize = content.arguments.size() * sizeof(FormatArgument);
  const std::size_t namesSize = caller.namesSize();
  char* const start = room_;
  const auto size = static_cast<std::size_t>(end - start);
  if (size < copiesSize + namesSize) [[unlikely]]
    return false;
  char* const at = start + copiesSize;
  if (namesSize <= LogCaller::readable && size >= copiesSize + LogCaller::readable) [[likely]] {
    std::memcpy(at, caller.names, LogCaller::readable);  // what is too much, the next copy overwrites
  } else {
    std::memcpy(at, caller.names, namesSize);
  }
  Room room(at + namesSize, size - copiesSize - namesSize);
  if (content.tag && !content.tag->isAbsent()) [[unlikely]] {
    char* const memory = room.take(sizeof(Value), alignof(Value));
    if (!memory) return false;
    tag_ = ::new (memory) Value(*content.tag);
  }
  if (copyFormatArguments(reinterpret_cast<FormatArgument*>(room_), content.arguments, room)) [[likely]]
    return true;
  if (tag_) tag_->~Value();
  return false;
}

}  // namespace norvik::detail
