#include "NorvikCore/logging/internal/LogPipeline.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/platform/foundation/NSApplicationTermination.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

namespace norvik::detail {

constinit std::atomic<LogPipeline*> LogPipeline::pipeline{nullptr};
constinit LogPipeline::Way LogPipeline::way{};

LogPipeline& LogPipeline::makeShared() {
  LogPipeline& made = kernel::madeOnce([] { return new LogPipeline; });
  pipeline.store(&made, std::memory_order_release);
  return made;
}

LogPipeline::LogPipeline()
    : mailbox_(
          *newForkAware<Mailbox>("cocoa.quillmarch", [](LetterRun& letters) { shared().fanOut_.lt_read(letters); })),
      loggingQueue(dispatch_queue_t::adopt(&mailbox_)),
      fanOut_(clock_),
      lifetime_(loggingQueue, [this] { fanOut_.lt_flush(); }) {
  way.clock = &clock_;
  way.mailbox = &mailbox_;
  dispatch_queue_set_specific(loggingQueue, GlobalLoggingQueueIdentityKey, GlobalLoggingQueueIdentityKey);
  lifetime_.watch();
  NSNotificationCenter::defaultCenter().addObserverForName(NSApplicationWillTerminateNotification, nullptr,
                                                           &DDLog::applicationWillTerminate);
}

void LogPipeline::addLogger(const Ref<DDLogger>& logger, int level) {
  if (!logger) return;
  dispatch_async(loggingQueue, [this, logger, level] {
    fanOut_.lt_addLogger(logger, level);
    lifetime_.rememberLoggers(fanOut_.nodes());
  });
}

void LogPipeline::removeLogger(const Ref<DDLogger>& logger) {
  if (!logger) return;
  dispatch_async(loggingQueue, [this, logger] {
    if (fanOut_.lt_removeLogger(logger)) lifetime_.rememberLoggers(fanOut_.nodes());
  });
}

void LogPipeline::removeAllLoggers() {
  dispatch_async(loggingQueue, [this] {
    fanOut_.lt_removeAllLoggers();
    lifetime_.rememberLoggers(fanOut_.nodes());
  });
}

void LogPipeline::log(const DDLogMessage& message) {
  dispatch_sync(loggingQueue, [&] { fanOut_.lt_log(message); });
}

void LogPipeline::flush() {
  dispatch_sync(loggingQueue, [this] { fanOut_.lt_flush(); });
}

void LogPipeline::flushLater(std::atomic<std::uint32_t>& word) {
  dispatch_async(loggingQueue, [this, &word] {
    fanOut_.lt_flush();
    ++word;
    futexWake(&word, 1);
  });
}

}  // namespace norvik::detail
