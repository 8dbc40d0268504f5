// NorvikCore/logging/DDASLLogger.h - writes each message to the system's log: the journal of systemd where it listens,
// else a syslog daemon on /dev/log.
//
//   DDLog::addLogger(DDASLLogger::sharedInstance(), LOG_LEVEL_WARN);
//   DDLogWarn("no bank account for %@", name);
//   // journalctl -t com.apple.console -p crit
//
// The level in the system's log is more severe than the flag's name says, on purpose, so that messages stand out among
// those of the system: an error is an alert (1), a warning critical (2), an information an error (3), a debug message a
// warning (4), and everything else a notice (5).
//
// The source of all entries is "com.apple.console", whatever the program is called. The journal gets, beside the text
// as it is, the fields PRIORITY, CODE_FILE, CODE_LINE, CODE_FUNC, TID, THREAD_NAME and QUEUE_LABEL. A syslog daemon
// gets a line: control characters and line feeds show as "#012", and what is beyond 64 KiB is cut.
//
// The service is never waited for. While it is full, 1000 messages or a megabyte of them wait here, for five seconds at
// most and not for the end of the process. What a missing, a slow or a restarted service does not take is lost and
// counted, and so is what there is no memory for; the system console says so, once a minute at most. See
// platform/kernel/SyslogClient.h.
//
// Threads: lostMessages() waits for the logging queue and then for the logger's, and must not be called on either.
// Errors:  none are raised.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace norvik {

class NK_EXPORT DDASLLogger : public DDAbstractLogger {
  NK_OBJECT(DDASLLogger, DDAbstractLogger)

  /// Done by every other operation on first use: makes the shared instance, which connects to the service.
  static void initialize();
  /// The only one: make<DDASLLogger>() gives an empty Ref, always.
  [[nodiscard]] static const Ref<DDASLLogger>& sharedInstance();
  DDASLLogger();

  /// How many messages the service has not taken so far; those that wait do not count.
  [[nodiscard]] std::uint64_t lostMessages() const;

  void logMessage(const DDLogMessage& message) override;
  [[nodiscard]] bool takesRuns() const noexcept override;
  [[nodiscard]] std::size_t logMessages(const DDLogRun& run) override;
  /// Attempts once more to send the waiting messages.
  void flush() override;
  /// "cocoa.quillmarch.aslLogger".
  [[nodiscard]] std::optional<NSString> loggerName() override;

 protected:
  ~DDASLLogger() override;
  bool init() override;

 private:
  struct Shared {};
  struct Client;
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
  explicit DDASLLogger(Shared);

  /// `appendText(std::string&)` gives false where there is no text.
  template <class Message, class AppendText>
  void send(const Message& message, const AppendText& appendText);
  /// After every message: reports losses, and has the waiting ones sent later.
  void followUp();

  detail::Hidden<Client> client;  // empty unless it is the shared instance
};

}  // namespace norvik
