// The caller's side of an asynchronous log call: clock, thread, copies, queue. What it touches is kept small and
// together, for in a program that logs now and then all of it comes from cold caches.
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/internal/LogDispatcher.h"
#include "NorvikCore/platform/dispatch/internal/SemaphoreCore.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Prefetch.h"
#include "NorvikCore/platform/kernel/internal/ThreadRevision.h"

#include <string>
#include <string_view>

namespace norvik {
namespace detail {
namespace {

// Below so many free permits a message is in a hurry: the writer that looks once a millisecond is asked to come now.
constexpr std::uint32_t relaxedPermits = LogDispatcher::maximumQueueSize * 9 / 10;

/// What a thread's calls have in common while it is off any queue. Found out anew when the thread is renamed, and once
/// in a while, for others may name it too.
struct alignas(64) KnownCaller {
  static constexpr std::uint64_t lifetime = 50'000'000;  // ns

  std::int64_t since = 0;
  std::uint32_t revision = 0, threadId = 0, threadNameSize = 0, queueLabelSize = 0;
  LogRecordPool::Cursor cursor;
  char names[96 + 4];
};
constinit thread_local KnownCaller known __attribute__((tls_model("initial-exec"))){};

/// Notes the caller if its names are as short as names are.
[[gnu::noinline]] bool findOutCaller(std::int64_t now) noexcept {
  const std::string_view name = kernel::currentThreadName();
  const std::string_view label = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL);
  if (name.size() + label.size() > sizeof known.names) return false;
  name.copy(known.names, name.size());
  label.copy(known.names + name.size(), label.size());
  known.threadNameSize = static_cast<std::uint32_t>(name.size());
  known.queueLabelSize = static_cast<std::uint32_t>(label.size());
  known.threadId = kernel::currentThreadId();
  known.revision = kernel::threadRevision;
  known.since = now;
  return true;
}

bool isKnown(std::int64_t now) noexcept {
  // Without a sign: a clock that was put back is later than any lifetime.
  const bool isRecent = static_cast<std::uint64_t>(now - known.since) < KnownCaller::lifetime;
  return isRecent & (known.revision == kernel::threadRevision);
}

}  // namespace

[[gnu::always_inline]] inline LogRecord* LogDispatcher::recordOf(const LogSite& site, const LogCaller& caller,
                                                                 const LogContent& content) {
  LogRecord* const record = way.records->take(known.cursor);
  if (record && record->fill(site, caller, content)) [[likely]]
    return record;
  return recordOnHeap(record, site, caller, content);
}

/// Where a record is in use, or too small.
[[gnu::cold]] LogRecord* LogDispatcher::recordOnHeap(LogRecord* record, const LogSite& site, const LogCaller& caller,
                                                     const LogContent& content) {
  if (record) record->giveBack();
  return LogRecord::filledOnHeap(site, caller, content);
}

[[gnu::always_inline]] inline void LogDispatcher::queueCallOf(const LogCaller& caller, const LogSite& site,
                                                              const LogContent& content) {
  std::uint32_t permits = 0;
  const bool hasPermit = way.permits->tryTake(permits) || shared().waitForPermit();
  LogRecord* record = nullptr;
  try {
    record = recordOf(site, caller, content);
  } catch (...) {  // no memory
    if (hasPermit) way.permits->give();
    throw;
  }
  record->run = &LogDispatcher::runRecords;
  record->hasPermit = hasPermit;
  way.records->prefetch(known.cursor);  // the next call's, which is in memory of the writer's processor until now
  if (permits < relaxedPermits) [[unlikely]] {
    way.queue->push(record, Delivery::prompt, Order::normal);
  } else if (!way.queue->tryPushRelaxed(record)) [[unlikely]] {
    way.queue->push(record, Delivery::relaxed, Order::normal);
  }
}

[[gnu::always_inline]] inline void LogDispatcher::queueCall(const LogSite& site, const LogContent& content) {
  way.permits->prefetch();
  way.queue->prefetch();
  const std::int64_t now = kernel::wallNanoseconds();
  if (currentFrame) [[unlikely]]
    return queueCallOfUnknown(site, now, content);
  if (!isKnown(now)) [[unlikely]] {
    if (!findOutCaller(now)) return queueCallOfUnknown(site, now, content);
  }
  queueCallOf({now, known.threadId, known.threadNameSize, known.queueLabelSize, known.names}, site, content);
}

/// On a queue, or with long names.
[[gnu::noinline]] void LogDispatcher::queueCallOfUnknown(const LogSite& site, std::int64_t now,
                                                         const LogContent& content) {
  const std::string_view name = kernel::currentThreadName();
  const std::string_view label = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL);
  const auto queue = [&](const char* names) __attribute__((noinline)) {
    queueCallOf({now, kernel::currentThreadId(), static_cast<std::uint32_t>(name.size()),
                 static_cast<std::uint32_t>(label.size()), names},
                site, content);
  };
  char few[sizeof known.names];
  if (name.size() + label.size() <= sizeof few) {
    name.copy(few, name.size());
    label.copy(few + name.size(), label.size());
    queue(few);
  } else {
    std::string many(name);
    queue(many.append(label).c_str());
  }
}

}  // namespace detail

void DDLog::logLater(const detail::LogSite& site, const Value* tag, const char* format, Sizes sizes,
                     const detail::FormatArgument* arguments) {
  (void)detail::LogDispatcher::shared();
  detail::LogDispatcher::queueCall(site, {{format, sizes.format}, {arguments, sizes.arguments}, tag});
}

/// Where the text has to be formed now.
void DDLog::logNow(bool asynchronous, const detail::LogSite& site, const Value* tag, std::string_view format,
                   FormatArguments arguments) {
  const NSString text = stringWithFormatArguments(format, arguments);
  if (asynchronous) {
    const FormatArgumentList list(text);
    logLater(site, tag, "%@", {2, 1}, FormatArguments(list).data());
  } else {
    queueLogMessage(DDLogMessage::initWithLogMsg(text, site.level, site.flag, site.context, site.file, site.function,
                                                 site.line, tag ? *tag : Value(), 0),
                    false);
  }
}

}  // namespace norvik
