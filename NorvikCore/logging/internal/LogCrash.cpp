#include "NorvikCore/logging/internal/LogCrash.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/internal/CrashFiles.h"
#include "NorvikCore/logging/internal/CrashText.h"
#include "NorvikCore/logging/internal/LogPipeline.h"
#include "NorvikCore/logging/internal/LogRecord.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"
#include "NorvikCore/platform/kernel/CallStack.h"
#include "NorvikCore/platform/kernel/CodePlace.h"
#include "NorvikCore/platform/kernel/FatalSignals.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <cxxabi.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace norvik::detail {

constinit std::atomic<bool> LogCrash::installed{false};

namespace {

// Deadlines, measured from the signal: for the writer to write the queued messages; for it to write the report; for the
// loggers to flush; for the handler's wait for all this; and for the whole handler.
constexpr std::uint64_t millisecond = 1'000'000;
constexpr std::uint64_t readPatience = 1000 * millisecond, reportPatience = 1250 * millisecond,
                        flushPatience = 1450 * millisecond, handlerPatience = 1600 * millisecond;
constexpr std::int64_t wholePatience = 1'900'000'000;
// How long the other loggers may take for the messages that were handed to them, and when a letter counts as abandoned.
constexpr std::uint64_t otherLoggersPatience = 200 * millisecond, abandonedAfter = 50 * millisecond;

constexpr std::size_t longestName = 400, reportSize = 48 << 10, outputSize = 32 << 10, longestReason = 2000;

// Data that the handler and the thread of the report share. All of it is static, because a handler cannot allocate.
enum Outcome : std::uint32_t { unknown, isWritten, cannotBeWritten };
constinit std::atomic<std::uint32_t> request{0}, outcome{unknown}, flushed{0}, never{0};
constinit std::atomic<bool> isComposed{false};
constinit std::atomic<std::uint32_t> serviceGeneration{UINT32_MAX};  // the process that has the thread
const kernel::FatalSignal* crash = nullptr;
std::uint64_t crashedAt = 0;    // monotonic nanoseconds
bool isWriterHeld = false;      // the crashed thread holds a queue that the writer needs
std::uint64_t heldLoggers = 0;  // the loggers whose queues the crashed thread holds up, a bit for each node

// How many lines of the report the thread of the report has sent to the loggers. They may still be unread letters.
constinit std::atomic<std::size_t> sentLines{0};

char serviceReport[reportSize], handlerReport[reportSize], serviceOutput[outputSize], handlerOutput[outputSize];
std::size_t serviceReportSize = 0;

// The exception for which std::terminate was called.
constinit std::atomic<bool> isExceptionNoted{false};
const char* exceptionType = nullptr;
char exceptionReason[longestReason];
std::size_t exceptionReasonSize = 0;

std::terminate_handler formerTerminate = nullptr;

Mailbox& mailbox() noexcept { return *LogPipeline::way.mailbox; }

void pauseBriefly() noexcept { (void)futexWait(never, 0, monotonicNanoseconds() + millisecond / 2); }

// The report

enum class Names : std::uint8_t { ofTheLinker, demangled };

void appendName(CrashText& text, const char* name, Names names) {
  if (names == Names::demangled) {
    text.appendOnOneLine(std::string_view(kernel::demangled(name)).substr(0, longestName));
  } else {
    text.append(std::string_view(name).substr(0, longestName));
  }
}

void appendFrame(CrashText& text, std::size_t number, std::uintptr_t address, Names names) {
  // A return address lies behind its call, and may belong to the next line or to another function.
  const kernel::CodePlace place = kernel::placeOfCode(number == 0 ? address : address - 1);
  text.append("*** #");
  text.appendNumber(number);
  text.append(' ');
  if (place.module) {
    text.append(place.module);
    text.append('+');
  }
  text.appendHexadecimal(place.offset);
  if (place.symbol) {
    text.append(' ');
    appendName(text, place.symbol, names);
    text.append(" + ");
    text.appendNumber(place.into);
  }
  text.append('\n');
}

void compose(CrashText& text, Names names) {
  text.append("*** ");
  text.append(crash->name);
  if (crash->reason) {
    text.append(", ");
    text.append(crash->reason);
    text.append(' ');
    text.appendHexadecimal(crash->address);
  }
  if (crash->sender != 0) {
    text.append(", sent by process ");
    text.appendSigned(crash->sender);
  }
  text.append(", in thread ");
  text.appendNumber(crash->threadId);
  text.append(" of process ");
  text.appendSigned(kernel::processId());
  text.append('\n');
  if (crash->isTerminate) {
    text.append("*** std::terminate");
    if (exceptionType) {
      text.append(": ");
      appendName(text, exceptionType, names);
    }
    if (exceptionReasonSize > 0) {
      text.append(": ");
      text.appendOnOneLine({exceptionReason, exceptionReasonSize});
    }
    text.append('\n');
  }
  for (std::size_t i = 0; i < crash->stack.size(); ++i) appendFrame(text, i, crash->stack[i], names);
}

/// Calls `use` with each line.
template <class Use>
void eachLine(std::string_view text, const Use& use) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    use(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

// Finishing the writer's work

/// A letter that was claimed but not posted, because its call crashed, would block the reader. It becomes one of
/// nothing.
void postAbandonedLetter(std::uint64_t& since, std::uint64_t& position) noexcept {
  const std::uint64_t now = monotonicNanoseconds(), read = mailbox().readPosition();
  Letter* const letter = mailbox().abandonedLetter();
  if (!letter || read != position) {
    since = now;
    position = read;
  } else if (now - since >= abandonedAfter) {
    LogRecord::make(*letter).fillWithNothing();
    letter->posted.store(read + 1, std::memory_order_release);
  }
}

/// Returns false if the letters up to `position` were not read in time.
bool waitUntilRead(std::uint64_t position, std::uint64_t until) noexcept {
  std::uint64_t since = monotonicNanoseconds(), waitingAt = UINT64_MAX;
  while (static_cast<std::int64_t>(mailbox().readPosition() - position) < 0) {
    if (monotonicNanoseconds() >= until) return false;
    postAbandonedLetter(since, waitingAt);
    pauseBriefly();
  }
  return true;
}

const std::vector<Ref<DDLoggerNode>>& nodes() noexcept { return LogPipeline::shared().fanOut().nodes(); }
const LogProgress& progress() noexcept { return LogPipeline::shared().fanOut().progress(); }

bool isLoggerHeld(std::size_t node) noexcept { return node < 64 && (heldLoggers >> node & 1U) != 0; }

/// Waits until the loggers that have not crashed finish the messages that were handed to them. The first message of a
/// logger may open a file.
void waitForOtherLoggers() noexcept {
  const std::uint64_t until = monotonicNanoseconds() + otherLoggersPatience;
  for (std::size_t i = 0; i < nodes().size(); ++i) {
    const DDLogger* const logger = nodes()[i]->logger().get();
    const LogRecord* next = nullptr;
    while (!isLoggerHeld(i) && progress().isAt(logger, next)) {
      if (monotonicNanoseconds() >= until) return;
      pauseBriefly();
    }
  }
}

void findHeldQueues() noexcept {
  heldLoggers = 0;
  isWriterHeld = isHeld(&mailbox());
  for (std::size_t i = 0; i < nodes().size(); ++i) {
    if (!isHeld(nodes()[i]->loggerQueue().core())) continue;
    isWriterHeld = true;
    if (i < 64) heldLoggers |= std::uint64_t{1} << i;
  }
}

// Writing to the files without their loggers

enum class Forming : std::uint8_t { whole, withoutMemory };

class Output {
 public:
  Output(int descriptor, char* memory) noexcept : descriptor_(descriptor), text_(memory, outputSize) {}

  /// Ends an incomplete line.
  void begin() noexcept {
    std::uint64_t size = 0;
    char last = '\n';
    std::size_t count = 0;
    if (kernel::seekToEnd(descriptor_, size) != 0 || size == 0) return;
    if (kernel::readAt(descriptor_, size - 1, &last, 1, &count) == 0 && count == 1 && last != '\n') text_.append('\n');
  }

  void write(const LogRecord& record, Forming forming) {
    if (text_.room() < outputSize / 4) flush();
    if (const DDLogMessage* made = record.made()) {
      stamp(static_cast<std::int64_t>(made->timestamp().timeIntervalSince1970() * 1e3) * 1'000'000);
      append(made->logMsg().view());
    } else {
      stamp(LogPipeline::way.clock->wallNanoseconds(record.ticks()));
      if (forming == Forming::whole) {
        std::string text;
        record.appendText(text);
        append(text);
      } else if (const std::string_view only = onlyText(record); only.data()) {
        append(only);
      } else {
        text_.appendFormatted(record.format(), record.formatArguments());
      }
    }
    text_.append('\n');
  }
  void write(std::string_view line) {
    if (text_.room() < outputSize / 4) flush();
    stamp(kernel::wallNanoseconds());
    append(line);
    text_.append('\n');
  }
  void flush() noexcept {
    (void)kernel::writeAll(descriptor_, text_.view());
    text_.clear();
  }

 private:
  void stamp(std::int64_t nanoseconds) noexcept {
    text_.appendTime(nanoseconds);
    text_.append("  ");
  }
  /// `text` may have any size.
  void append(std::string_view text) noexcept {
    while (!text.empty()) {
      if (text_.room() < 2) flush();
      const std::size_t count = std::min(text.size(), text_.room() - 1);
      text_.append(text.substr(0, count));
      text.remove_prefix(count);
    }
  }
  static std::string_view onlyText(const LogRecord& record) noexcept {
    const FormatArguments arguments = record.formatArguments();
    if (record.format() != LogContent::formed || arguments.size() != 1) return {};
    const FormatArgument& argument = arguments.data()[0];
    if (argument.kind() == FormatKind::text) return {static_cast<const char*>(argument.pointer), argument.length};
    if (argument.kind() == FormatKind::string) return static_cast<const NSString*>(argument.pointer)->view();
    return {};
  }

  const int descriptor_;
  CrashText text_;
};

/// Skips letters that a logger already has, among those that are being handed out.
class Skipping {
 public:
  Skipping(const DDLogger* logger, std::uint64_t from, std::uint64_t to) noexcept {
    last_ = progress().last();
    (void)progress().isAt(logger, next_);
    for (std::uint64_t at = from; at != to; ++at) {
      Letter* const letter = mailbox().unreadLetter(at);
      if (letter && &LogRecord::of(*letter) == last_) isIn_ = true;
    }
    isIn_ = isIn_ && last_;
  }
  /// Call it in the order of the letters.
  bool skips(const LogRecord& record) noexcept {
    if (!isIn_) return false;
    if (&record == next_) {
      isIn_ = false;
      return false;
    }
    if (&record == last_) isIn_ = false;
    return true;
  }

 private:
  const LogRecord *last_ = nullptr, *next_ = nullptr;
  bool isIn_ = false;
};

/// The report without its first `count` lines.
std::string_view withoutLines(std::string_view report, std::size_t count) noexcept {
  for (; count > 0 && !report.empty(); --count) {
    report.remove_prefix(std::min(report.find('\n'), report.size() - 1) + 1);
  }
  return report;
}

/// Writes the unread messages to each file, and then the report, unless another thread has written it there. Continues
/// where another thread stopped. Lines of the report that were sent to the loggers are in the file already or among the
/// unread messages. Returns false if no logger has a file.
bool writeToFiles(std::string_view report, char* memory, Forming forming) {
  bool hasFile = false;
  report = withoutLines(report, sentLines);  // before the positions are read: the line that is being sent is written
  for (const Ref<DDLoggerNode>& node : nodes()) {
    CrashFiles::File* const file = CrashFiles::find(node->logger().get());
    if (!file) continue;
    hasFile = true;
    Output output(file->descriptor, memory);
    output.begin();
    const std::uint64_t read = mailbox().readPosition(), sent = mailbox().sentPosition();
    Skipping skipping(node->logger().get(), read, sent);
    for (std::uint64_t at = read; at != sent; ++at) {
      Letter* const letter = mailbox().unreadLetter(at);
      if (!letter) continue;
      const LogRecord& record = LogRecord::of(*letter);
      if (record.isOfNothing() || skipping.skips(record) || at < file->position) continue;
      const int flag = record.made() ? record.made()->logFlag() : record.site().flag;
      if (flag <= node->logLevel()) output.write(record, forming);
    }
    output.flush();
    file->position = sent;
    if (!file->isReported.exchange(true) && node->logLevel() >= LOG_FLAG_ERROR) {
      eachLine(report, [&](std::string_view line) { output.write(line); });
      output.flush();
    }
  }
  return hasFile;
}

// The thread of the report

void tell(Outcome reached) noexcept {
  outcome = reached;
  futexWake(&outcome, INT_MAX);
}

/// Returns true if every logger has received the report.
bool logReport(std::string_view report) {
  if (!waitUntilRead(mailbox().sentPosition(), crashedAt + readPatience)) return false;
  if (nodes().empty()) return false;
  eachLine(report, [](std::string_view line) {
    DDLog::log(true, LOG_LEVEL_ERROR, LOG_FLAG_ERROR, 0, "DDCrashHandler", "report", 0, nullptr, "%@", line);
    ++sentLines;
  });
  if (!waitUntilRead(mailbox().sentPosition(), crashedAt + reportPatience)) return false;
  LogPipeline::shared().flushLater(flushed);
  const std::uint64_t until = crashedAt + flushPatience;
  while (flushed == 0 && monotonicNanoseconds() < until) (void)futexWait(flushed, 0, until);
  return true;
}

void serve() {
  CrashText text(serviceReport, sizeof serviceReport);
  compose(text, Names::demangled);
  serviceReportSize = text.view().size();
  isComposed = true;
  if (isWriterHeld) {
    waitForOtherLoggers();
  } else if (logReport(text.view())) {
    return tell(isWritten);
  }
  tell(writeToFiles(text.view(), serviceOutput, Forming::whole) ? isWritten : cannotBeWritten);
}

void* serviceMain(void*) {
  kernel::setCurrentThreadName("norvik-crash");
  kernel::coverThread();
  (void)kernel::demangled("_ZN6norvik5DDLogE");  // so that this thread already has a heap of its own
  while (request == 0) (void)futexWait(request, 0);
  serve();
  return nullptr;
}

/// Starts the thread, once per process.
void startService() {
  const std::uint32_t process = kernel::forkGeneration();
  if (serviceGeneration.exchange(process) == process) return;
  request = outcome = flushed = 0;
  sentLines = 0;
  isComposed = false;
  if (startThread(&serviceMain, nullptr) != 0) serviceGeneration = UINT32_MAX;
}

// The steps of the handler

void askService(const kernel::FatalSignal& signal) {
  crash = &signal;
  crashedAt = monotonicNanoseconds();
  findHeldQueues();
  outcome = unknown;
  isComposed = false;
  if (serviceGeneration.load() != kernel::forkGeneration()) return;
  request = 1;
  futexWake(&request, INT_MAX);
  const std::uint64_t until = crashedAt + handlerPatience;
  while (outcome == unknown && monotonicNanoseconds() < until) (void)futexWait(outcome, unknown, until);
}

void writeHere(const kernel::FatalSignal&) {
  if (outcome == isWritten) return;
  const bool hasService = serviceGeneration.load() == kernel::forkGeneration();
  if (!hasService && !isWriterHeld) (void)waitUntilRead(mailbox().sentPosition(), crashedAt + readPatience);
  std::string_view report(serviceReport, serviceReportSize);
  if (!isComposed) {
    CrashText text(handlerReport, sizeof handlerReport);
    compose(text, Names::ofTheLinker);
    report = text.view();
  }
  if (writeToFiles(report, handlerOutput, Forming::withoutMemory)) return;
  eachLine(report, [](std::string_view line) { kernel::writeSystemLog(line); });
}

constexpr kernel::FatalStep steps[] = {&askService, &writeHere};

// std::terminate

void noteException() noexcept {
  if (isExceptionNoted.exchange(true)) return;
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (!type) return;
  exceptionType = type->name();
  try {
    std::rethrow_exception(std::current_exception());
  } catch (const std::exception& exception) {
    if (const char* const what = exception.what()) {
      exceptionReasonSize = std::string_view(what).copy(exceptionReason, sizeof exceptionReason);
    }
  } catch (...) {  // has no text
    exceptionReasonSize = 0;
  }
}

[[noreturn]] void terminate() {
  noteException();
  kernel::runFatalSteps(SIGABRT);
  if (formerTerminate) formerTerminate();
  std::abort();
}

struct Installed {};

}  // namespace

void LogCrash::install() {
  (void)kernel::madeOnce([] {
    (void)LogPipeline::shared();
    kernel::prepareCodePlaces();
    kernel::watchFatalSignals(steps, wholePatience);
    formerTerminate = std::set_terminate(&terminate);
    startService();
    installed = true;
    return new Installed;
  });
  kernel::coverThread();
}

void LogCrash::coverSlowly() {
  kernel::coverThread();
  if (serviceGeneration.load(std::memory_order_relaxed) != kernel::forkGeneration()) startService();
}

}  // namespace norvik::detail
