// NorvikCore/logging/internal/LogIntake.h - the caller's side of the log: turns a call, or a message that the caller
// created as an object, into a letter in the mailbox of the logging queue.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/logging/internal/LogRecord.h"
#include "NorvikCore/platform/dispatch/internal/Mailbox.h"

#include <cstdint>

namespace norvik::detail {

/// The limit for messages that are queued or being passed to the loggers. A caller beyond it blocks, unless the loggers
/// wait for that caller.
inline constexpr std::uint64_t queueSemaphore = Mailbox::bound;
static_assert(queueSemaphore == 1000);

class LogIntake {
 public:
  /// Records the state of the calling thread at the time of this call.
  static void queueCall(const LogSite& site, const LogContent& content);
  static void queueMessage(const Ref<DDLogMessage>& message);

 private:
  static void queueCallOfUnknown(const LogSite& site, std::uint64_t ticks, const LogContent& content);
  static void queueCallOf(const LogCaller& caller, const LogSite& site, const LogContent& content);
  static void queueFormed(const LogCaller& caller, const LogSite& site, const LogContent& content);
  static void queueAsItIs(const LogCaller& caller, const LogSite& site, const LogContent& content);
  static void queueSlowly(Letter* claimed, const LogCaller& caller, const LogSite& site, const LogContent& content);
  template <class Fill>
  static void post(Letter* claimed, const Fill& fill);
};

}  // namespace norvik::detail
