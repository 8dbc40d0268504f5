// NorvikCore/logging/internal/LogRecord.h - the record of a log call in a letter of the logging queue's mailbox:
// caller, time, and copies of the format's arguments. The text is formed when a logger asks for it.
//
// A record holds its content in one piece of memory: first the fields of fixed size, then the parts of variable size.
// The caller writes it from start to end and touches no other memory for it. If the content does not fit, it is stored
// on the heap, and the record refers to it. A message that the caller created as an object is also referred to.
//
// Threads: confined to the caller until the record is posted, then to the logging queue.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/logging/LogCall.h"
#include "NorvikCore/platform/dispatch/internal/Mailbox.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/internal/FormatCopy.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The calling thread and the time of the call.
struct LogCaller {
  static constexpr std::size_t readable = 32;

  std::uint64_t ticks;  // of the pipeline's TickClock
  std::uint32_t threadId, threadNameSize, queueLabelSize;
  const char* names;  // the thread's name, then the queue's label; `readable` bytes can always be read
  [[nodiscard]] std::size_t namesSize() const noexcept { return std::size_t{threadNameSize} + queueLabelSize; }
};

/// The content of a log call: a format that can wait, and its arguments. The tag may be null.
struct LogContent {
  static constexpr std::string_view formed = "%@";  // the format for a text that the caller has formed

  std::string_view format;
  FormatArguments arguments;
  const Value* tag;
};

class LogRecord {
 public:
  LogRecord(const LogRecord&) = delete;
  LogRecord& operator=(const LogRecord&) = delete;

  /// A new record, which one of the fill functions must fill next.
  [[nodiscard]] static LogRecord& make(Letter& letter) noexcept { return *::new (letter.content) LogRecord; }
  [[nodiscard]] static LogRecord& of(Letter& letter) noexcept {
    return *std::launder(reinterpret_cast<LogRecord*>(letter.content));
  }

  /// Copies everything given. Returns false, and fills nothing, if the record has too little room.
  [[nodiscard, gnu::always_inline]] bool fill(const LogSite& site, const LogCaller& caller,
                                              const LogContent& content) noexcept {
    return fillWithin(room_ + sizeof room_, site, caller, content);
  }
  /// Copies everything given to the heap. If there is no memory it raises, and the record becomes a record of nothing.
  void fillOnHeap(const LogSite& site, const LogCaller& caller, const LogContent& content);
  /// Stores a message that the caller created as an object.
  void fill(const Ref<DDLogMessage>& message) noexcept;
  /// Makes this a record of nothing. Used in the place of a call that crashed.
  void fillWithNothing() noexcept;

  /// True if the call had no memory for its content, or crashed.
  [[nodiscard]] bool isOfNothing() const noexcept { return made_ == nullptr && whole().format_ == nullptr; }
  /// The message, if the caller created it as an object; otherwise null.
  [[nodiscard]] DDLogMessage* made() const noexcept { return made_; }

  // For a record with content of its own: neither of nothing nor with made().
  [[nodiscard]] const LogSite& site() const noexcept { return whole().site_; }
  [[nodiscard]] std::uint64_t ticks() const noexcept { return whole().ticks_; }
  [[nodiscard]] std::uint32_t threadId() const noexcept { return whole().threadId_; }
  [[nodiscard]] std::string_view threadName() const noexcept { return {whole().names(), whole().threadNameSize_}; }
  [[nodiscard]] std::string_view queueLabel() const noexcept {
    return {whole().names() + whole().threadNameSize_, whole().queueLabelSize_};
  }
  [[nodiscard]] bool hasTag() const noexcept { return whole().tag_ != nullptr; }
  [[nodiscard]] Value tag() const { return whole().tag_ ? *whole().tag_ : Value(); }
  [[nodiscard]] NSString text() const;
  /// Appends the text as UTF-8.
  void appendText(std::string& line) const;
  /// The parts of the text, for code that must not form it.
  [[nodiscard]] std::string_view format() const noexcept { return {whole().format_, whole().formatSize_}; }
  [[nodiscard]] FormatArguments formatArguments() const noexcept { return whole().arguments(); }

  /// Releases the content. (A forked child leaves content that it does not read to its parent.)
  void dispose() noexcept;

 private:
  LogRecord() noexcept {}  // NOLINT(modernize-use-equals-default): leaves the members as they are, to be filled

  [[gnu::always_inline]] bool fillWithin(char* end, const LogSite& site, const LogCaller& caller,
                                         const LogContent& content) noexcept;
  [[nodiscard]] const LogRecord& whole() const noexcept { return onHeap_ ? *onHeap_ : *this; }
  [[nodiscard]] FormatArguments arguments() const noexcept {
    return {reinterpret_cast<const FormatArgument*>(room_), argumentCount_};
  }
  [[nodiscard]] const char* names() const noexcept {
    const char* const start = room_;  // of a record on the heap, there is more room behind the member
    return start + argumentCount_ * sizeof(FormatArgument);
  }

  LogRecord* onHeap_;
  DDLogMessage* made_;  // retained
  std::uint64_t ticks_;
  LogSite site_;
  std::uint32_t threadId_, formatSize_, threadNameSize_, queueLabelSize_, argumentCount_;
  const char* format_;
  Value* tag_;
  // Copies of the arguments, the thread's name, the queue's label, the tag, and the data to which the copies refer.
  alignas(FormatArgument) char room_[136];
};
static_assert(sizeof(LogRecord) <= Letter::contentSize && alignof(LogRecord) <= 16);

inline bool LogRecord::fillWithin(char* end, const LogSite& site, const LogCaller& caller,
                                  const LogContent& content) noexcept {
  onHeap_ = nullptr;
  made_ = nullptr;
  argumentCount_ = static_cast<std::uint32_t>(content.arguments.size());
  site_.level = site.level;  // member by member, as the call site has just stored them (FormatCopy.h)
  site_.flag = site.flag;
  site_.context = site.context;
  site_.line = site.line;
  site_.file = site.file;
  site_.function = site.function;
  ticks_ = caller.ticks;
  threadId_ = caller.threadId;
  threadNameSize_ = caller.threadNameSize;
  queueLabelSize_ = caller.queueLabelSize;
  formatSize_ = static_cast<std::uint32_t>(content.format.size());
  tag_ = nullptr;

  const std::size_t copiesSize = content.arguments.size() * sizeof(FormatArgument);
  const std::size_t namesSize = caller.namesSize();
  char* const start = room_;
  const auto size = static_cast<std::size_t>(end - start);
  if (size < copiesSize + namesSize) [[unlikely]]
    return false;
  char* const at = start + copiesSize;
  if (namesSize <= LogCaller::readable && size >= copiesSize + LogCaller::readable) [[likely]] {
    std::memcpy(at, caller.names, LogCaller::readable);  // surplus bytes are overwritten by the next copy
  } else {
    std::memcpy(at, caller.names, namesSize);
  }
  Room room(at + namesSize, size - copiesSize - namesSize);
  if (content.tag && !content.tag->isAbsent()) [[unlikely]] {
    char* const memory = room.take(sizeof(Value), alignof(Value));
    if (!memory) return false;
    tag_ = ::new (memory) Value(*content.tag);
  }
  if (copyFormatArguments(reinterpret_cast<FormatArgument*>(room_), content.arguments, room)) [[likely]] {
    format_ = content.format.data();
    return true;
  }
  if (tag_) tag_->~Value();
  return false;
}

}  // namespace norvik::detail
