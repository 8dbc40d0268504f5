// The caller's side of an asynchronous log call: clock, thread, copies, mailbox. The memory that it touches is kept
// small and contiguous, because in a program that logs rarely all of it is read from cold caches.
#include "NorvikCore/logging/internal/LogIntake.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/internal/LogCrash.h"
#include "NorvikCore/logging/internal/LogPipeline.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"
#include "NorvikCore/platform/kernel/internal/ThreadRevision.h"

#include <memory>
#include <string>
#include <string_view>

namespace norvik {
namespace detail {
namespace {

// How often a caller that waits for room checks whether it holds the loggers up.
constexpr std::uint64_t roomPause = 10'000'000;

// A text of at most this size that the caller forms fits into a record.
constexpr std::size_t shortText = 96;

/// Properties of the calling thread that its calls share while it is outside any queue. They are read again when the
/// thread is renamed, and at intervals, because other threads may rename it too.
struct alignas(64) KnownCaller {
  std::uint64_t since = 0;
  std::uint32_t revision = 0, threadId = 0, threadNameSize = 0, queueLabelSize = 0;
  char names[96 + 8];
};
constinit thread_local KnownCaller known __attribute__((tls_model("initial-exec"))){};

/// Stores the caller's properties. Returns false if its names are too long.
[[gnu::noinline]] bool findOutCaller(std::uint64_t now) noexcept {
  LogCrash::cover();
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

bool isKnown(std::uint64_t now) noexcept {
  const bool isRecent = now - known.since < kernel::TickClock::briefly;
  return isRecent & (known.revision == kernel::threadRevision);
}

}  // namespace

[[gnu::always_inline]] inline void LogIntake::queueAsItIs(const LogCaller& caller, const LogSite& site,
                                                          const LogContent& content) {
  Mailbox& mailbox = *LogPipeline::way.mailbox;
  Letter* const letter = mailbox.tryClaim();
  if (letter) [[likely]] {
    if (LogRecord::make(*letter).fill(site, caller, content)) [[likely]]
      return mailbox.post(*letter);
  }
  queueSlowly(letter, caller, site, content);
}

[[gnu::always_inline]] inline void LogIntake::queueCallOf(const LogCaller& caller, const LogSite& site,
                                                          const LogContent& content) {
  Mailbox& mailbox = *LogPipeline::way.mailbox;
  if (mailbox.isCrowded()) [[unlikely]]
    return queueFormed(caller, site, content);
  queueAsItIs(caller, site, content);
}

/// Called when the caller is about to wait for the loggers. The caller forms the text itself, which is half of the
/// loggers' work.
[[gnu::noinline]] void LogIntake::queueFormed(const LogCaller& caller, const LogSite& site, const LogContent& content) {
  char text[shortText];
  const std::size_t size = formText(text, shortText, content.format, content.arguments);
  if (size > shortText) return queueAsItIs(caller, site, content);
  const FormatArgumentList list(std::string_view(text, size));
  queueAsItIs(caller, site, {LogContent::formed, list, content.tag});
}

/// Used if the record is too small for the call, or no letter is free.
[[gnu::cold, gnu::noinline]] void LogIntake::queueSlowly(Letter* claimed, const LogCaller& caller, const LogSite& site,
                                                         const LogContent& content) {
  post(claimed, [&](LogRecord& record) {
    if (!record.fill(site, caller, content)) record.fillOnHeap(site, caller, content);
  });
}

void LogIntake::queueMessage(const Ref<DDLogMessage>& message) {
  Letter* const letter = LogPipeline::way.mailbox->tryClaim();
  post(letter, [&](LogRecord& record) { record.fill(message); });
}

/// Posts the record that `fill` makes. Without a letter it waits for one; but a caller that holds the loggers up takes
/// a letter beyond the bound.
template <class Fill>
void LogIntake::post(Letter* claimed, const Fill& fill) {
  LogPipeline& pipeline = LogPipeline::shared();
  Mailbox& mailbox = *LogPipeline::way.mailbox;
  while (!claimed) {
    if (pipeline.lifetime().holdsUpLoggers()) {
      auto loose = std::make_unique<LooseLetter>();
      fill(LogRecord::make(loose->letter));
      return mailbox.post(loose.release());
    }
    if (mailbox.waitForRoom(monotonicNanoseconds() + roomPause)) claimed = mailbox.tryClaim();
  }
  try {
    fill(LogRecord::make(*claimed));
  } catch (...) {  // no memory: the letter is one of nothing
    mailbox.post(*claimed);
    throw;
  }
  mailbox.post(*claimed);
}

[[gnu::always_inline]] inline void LogIntake::queueCall(const LogSite& site, const LogContent& content) {
  LogPipeline::way.mailbox->prefetch();
  const std::uint64_t now = LogPipeline::way.clock->now();
  if (currentFrame) [[unlikely]]
    return queueCallOfUnknown(site, now, content);
  if (!isKnown(now)) [[unlikely]] {
    if (!findOutCaller(now)) return queueCallOfUnknown(site, now, content);
  }
  queueCallOf({now, known.threadId, known.threadNameSize, known.queueLabelSize, known.names}, site, content);
}

/// Used on a queue, or for long names.
[[gnu::noinline]] void LogIntake::queueCallOfUnknown(const LogSite& site, std::uint64_t now,
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

void logLater(const LogSite& site, const Value* tag, const char* format, LogSizes sizes,
              const FormatArgument* arguments) {
  (void)LogPipeline::shared();
  LogIntake::queueCall(site, {{format, sizes.format}, {arguments, sizes.arguments}, tag});
}

void logNow(bool asynchronous, const LogSite& site, const Value* tag, std::string_view format,
            FormatArguments arguments) {
  const NSString text = stringWithFormatArguments(format, arguments);
  LogCrash::cover();
  if (asynchronous) {
    const FormatArgumentList list(text);
    logLater(site, tag, "%@", {2, 1}, FormatArguments(list).data());
  } else {
    DDLog::queueLogMessage(DDLogMessage::initWithLogMsg(text, site.level, site.flag, site.context, site.file,
                                                        site.function, site.line, tag ? *tag : Value(), 0),
                           false);
  }
}

}  // namespace detail

}  // namespace norvik
