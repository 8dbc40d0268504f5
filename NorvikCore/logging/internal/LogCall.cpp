// The caller's side of an asynchronous log call: clock, thread, copies, queue. What it touches is kept small and
// together, for in a program that logs now and then all of it comes from cold caches.
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/internal/LogDispatcher.h"
#include "NorvikCore/platform/dispatch/internal/SemaphoreCore.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/ThreadRevision.h"

namespace norvik {
namespace detail {
namespace {

// Below so many free permits a message is in a hurry: the writer that looks once a millisecond is asked to come now.
constexpr std::uint32_t relaxedPermits = LogDispatcher::maximumQueueSize * 9 / 10;

/// What a thread's calls have in common while it is off any queue. Found out anew when the thread is renamed, and once
/// in a while, for others may name it too.
struct alignas(64) KnownCaller {
  static constexpr std::int64_t lifetime = 50'000'000;

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
  return known.revision == kernel::threadRevision && now - known.since < KnownCaller::lifetime && now >= known.since;
}

}  // namespace

/// Asks for the memory that a call is about to change, so that all of it comes at once and while the clock is read.
inline void LogDispatcher::prefetch(const FormatArguments& arguments) noexcept {
  way.records->prefetch(known.cursor);
  way.permits->prefetch();
  way.queue->prefetch();
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments.data()[i].kind >= FormatKind::text) __builtin_prefetch(arguments.data()[i].pointer);
  }
}

inline LogRecord* LogDispatcher::recordOf(const LogSite& site, const LogCaller& caller, const LogContent& content) {
  LogRecord* const record = way.records->take(known.cursor);
  if (record && record->fill(site, caller, content)) [[likely]]
    return record;
  if (record) record->giveBack();
  return LogRecord::filledOnHeap(site, caller, content);
}

inline void LogDispatcher::queueCallOf(const LogCaller& caller, const LogSite& site, const LogContent& content) {
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
  const bool hurry = permits < relaxedPermits;
  if (!hurry && way.queue->tryPushRelaxed(record)) [[likely]]
    return;
  way.queue->push(record, hurry ? Delivery::prompt : Delivery::relaxed, Order::normal);
}

bool LogDispatcher::waitForPermit() {
  if (currentFrame && isOnAnyQueue(rememberedLoggers())) return false;
  dispatch_semaphore_wait(queueSemaphore, DISPATCH_TIME_FOREVER);
  return true;
}

void LogDispatcher::queueCall(const LogSite& site, const LogContent& content) {
  prefetch(content.arguments);
  const std::int64_t now = kernel::wallNanoseconds();
  if (currentFrame || (!isKnown(now) && !findOutCaller(now))) [[unlikely]]
    return queueCallOfUnknown(site, now, content);
  queueCallOf({now,
               known.threadId,
               {known.names, known.threadNameSize},
               {known.names + known.threadNameSize, known.queueLabelSize}},
              site, content);
}

/// On a queue, or with long names.
void LogDispatcher::queueCallOfUnknown(const LogSite& site, std::int64_t now, const LogContent& content) {
  queueCallOf({now, kernel::currentThreadId(), kernel::currentThreadName(),
               dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL)},
              site, content);
}

}  // namespace detail

void DDLog::logArguments(bool asynchronous, const detail::LogSite& site, const Value& tag, std::string_view format,
                         FormatArguments arguments, bool canWait) {
  (void)detail::LogDispatcher::shared();
  if (asynchronous && canWait) [[likely]]
    return detail::LogDispatcher::queueCall(site, {format, arguments, tag});
  logText(asynchronous, site, tag, stringWithFormatArguments(format, arguments));
}

/// Where the text has to be formed now.
void DDLog::logText(bool asynchronous, const detail::LogSite& site, const Value& tag, const NSString& text) {
  if (asynchronous) {
    const FormatArgumentList list(text);
    detail::LogDispatcher::queueCall(site, {"%@", list, tag});
  } else {
    queueLogMessage(DDLogMessage::initWithLogMsg(text, site.level, site.flag, site.context, site.file, site.function,
                                                 site.line, tag, 0),
                    false);
  }
}

}  // namespace norvik
