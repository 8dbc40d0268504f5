#include "NorvikCore/logging/DDASLLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/SyslogClient.h"
#include "NorvikCore/platform/kernel/SystemError.h"

#include <cmath>
#include <iterator>
#include <new>
#include <string>
#include <string_view>

namespace norvik {
namespace {

constexpr std::int64_t retryPause = 10 * NSEC_PER_MSEC, reportPause = 60 * NSEC_PER_SEC;

int systemLevel(int flag) noexcept {
  constexpr int levels[] = {1, 2, 5, 3, 5, 5, 5, 4};
  constexpr int others = 5;
  return flag >= 1 && flag <= static_cast<int>(std::size(levels)) ? levels[flag - 1] : others;
}

std::string_view orNothing(const char* text) noexcept { return text ? text : std::string_view(); }

std::string_view nameOf(const DDLogEntry& entry) noexcept { return entry.threadName(); }
std::string_view nameOf(const DDLogMessage& message) noexcept { return message.threadName().view(); }

}  // namespace

struct DDASLLogger::Client {
  [[nodiscard]] std::int64_t localSeconds(Date date) const;
  void report();

  kernel::SyslogClient service{"com.apple.console"};
  std::string text;                // of one message of a run; a member so that its memory is reused
  std::uint32_t generation = 0;    // the process to which willRetry belongs (kernel::forkGeneration)
  bool willRetry = false;          // a timer will send the waiting messages
  std::uint64_t reportedLost = 0;  // the losses at the last report on the console
  std::int64_t reportedAt = 0;
  std::uint64_t takenAtReport = 0;
  bool isReported = false;  // losses are reported, and that messages are taken again is not
};

std::int64_t DDASLLogger::Client::localSeconds(Date date) const {
  const double seconds = std::floor(date.timeIntervalSince1970());
  constexpr double most = 1e11;
  if (!(std::fabs(seconds) < most)) return 0;
  return static_cast<std::int64_t>(seconds) + NSTimeZone::defaultTimeZone()->secondsFromGMTForDate(date);
}

void DDASLLogger::Client::report() {
  if (isReported && service.taken() > takenAtReport) {
    isReported = false;
    NSLog("DDASLLogger: the system log accepts messages again; %llu were lost", service.lost());
    reportedLost = service.lost();
    return;
  }
  if (isReported || service.lost() == reportedLost) return;
  const std::int64_t now = kernel::monotonicNanoseconds();
  if (reportedAt != 0 && now - reportedAt < reportPause) return;
  reportedAt = now;
  reportedLost = service.lost();
  takenAtReport = service.taken();
  isReported = true;
  NSLog("DDASLLogger: the system log does not accept messages: %@; they are lost until it does",
        kernel::errorText(service.lastError()));
}

// The one instance

void DDASLLogger::initialize() { (void)sharedInstance(); }

const Ref<DDASLLogger>& DDASLLogger::sharedInstance() {
  return kernel::madeOnce([] { return new Ref<DDASLLogger>(make<DDASLLogger>(Shared{})); });
}

DDASLLogger::DDASLLogger() = default;

DDASLLogger::DDASLLogger(Shared) : client(new Client) {}

DDASLLogger::~DDASLLogger() = default;

bool DDASLLogger::init() { return client && DDAbstractLogger::init(); }

std::optional<NSString> DDASLLogger::loggerName() { return "cocoa.quillmarch.aslLogger"; }

std::uint64_t DDASLLogger::lostMessages() const {
  const dispatch_queue_t queue = const_cast<DDASLLogger*>(this)->loggerQueue();
  return dispatch_sync(DDLog::loggingQueue(),
                       [&] { return dispatch_sync(queue, [this] { return client->service.lost(); }); });
}

// Writing

template <class Message, class AppendText>
void DDASLLogger::send(const Message& message, const AppendText& appendText) {
  client->text.clear();
  try {
    if (!appendText(client->text)) return;
    client->service.log({.level = systemLevel(message.logFlag()),
                         .text = client->text,
                         .file = orNothing(message.file()),
                         .function = orNothing(message.function()),
                         .line = message.lineNumber(),
                         .threadId = message.machThreadID(),
                         .threadName = nameOf(message),
                         .queueLabel = message.queueLabel(),
                         .localSeconds = client->localSeconds(message.timestamp())});
  } catch (const std::bad_alloc&) {  // of the text or the time zone
    client->service.loseUnformed();
  }
}

void DDASLLogger::logMessage(const DDLogMessage& message) {
  send(message, [&](std::string& text) {
    if (DDLogFormatter* own = formatter().get()) return own->appendLogMessage(text, message);
    text += message.logMsg().utf8();
    return true;
  });
  followUp();
}

bool DDASLLogger::takesRuns() const noexcept { return true; }

std::size_t DDASLLogger::logMessages(const DDLogRun& run) {
  for (const DDLogEntry& entry : run) {
    send(entry, [&](std::string& text) {
      if (DDLogFormatter* own = formatter().get()) return own->appendLogEntry(text, entry);
      entry.appendText(text);
      return true;
    });
  }
  followUp();
  return run.count();
}

void DDASLLogger::flush() {
  client->service.sendWaiting();
  followUp();
}

void DDASLLogger::followUp() {
  constexpr std::size_t keptMemory = 256 << 10;
  if (client->text.capacity() > keptMemory) client->text = {};
  if (client->generation != kernel::forkGeneration()) {
    client->generation = kernel::forkGeneration();
    client->willRetry = false;
  }
  try {
    client->report();
    if (client->willRetry || !client->service.hasWaiting()) return;
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, retryPause), loggerQueue(), [self = ref(*this)] {
      self->client->willRetry = false;
      self->client->service.sendWaiting();
      self->followUp();
    });
    client->willRetry = true;
  } catch (const std::bad_alloc&) {  // repeated after a later message
    return;
  }
}

}  // namespace norvik
