// NorvikCore/logging/DDASLLogger.h - writes each message to the system's log: the journal of systemd if it is running,
// otherwise a syslog daemon on /dev/log.
//
//   DDLog::addLogger(DDASLLogger::sharedInstance(), LOG_LEVEL_WARN);
//   DDLogWarn("no bank account for %@", name);
//   // journalctl -t com.apple.console -p crit
//
// The level in the system's log is more severe than the flag's name, on purpose, so that messages stand out among those
// of the system. An error is an alert (1), a warning is critical (2), an information is an error (3), a debug message
// is a warning (4), and everything else is a notice (5).
//
// The source of all entries is "com.apple.console", for every program. The journal receives the unchanged text and the
// fields PRIORITY, CODE_FILE, CODE_LINE, CODE_FUNC, TID, THREAD_NAME and QUEUE_LABEL. A syslog daemon receives a line:
// control characters and line feeds show as "#012", and a line is cut after 64 KiB.
//
// The logger never waits for the service. While the service is full, up to 1000 messages or a megabyte of them wait in
// the logger, for at most five seconds; the process does not wait for them when it ends. A message is lost and counted
// if the service is missing, slow or restarted and does not take it, or if there is no memory for it. Losses are
// reported on the system console at most once a minute. See platform/kernel/SyslogClient.h.
//
// Threads: lostMessages() waits for the logging queue and then for the logger's queue, and must not be called on
//          either.
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

  /// Every other operation calls this on first use. It creates the shared instance, which connects to the service.
  static void initialize();
  /// The only instance: make<DDASLLogger>() always returns an empty Ref.
  [[nodiscard]] static const Ref<DDASLLogger>& sharedInstance();
  DDASLLogger();

  /// The number of messages that the service did not take; waiting messages do not count.
  [[nodiscard]] std::uint64_t lostMessages() const;

  void logMessage(const DDLogMessage& message) override;
  [[nodiscard]] bool takesRuns() const noexcept override;
  [[nodiscard]] std::size_t logMessages(const DDLogRun& run) override;
  /// Tries once more to send the waiting messages.
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

  /// `appendText(std::string&)` returns false if there is no text.
  template <class Message, class AppendText>
  void send(const Message& message, const AppendText& appendText);
  /// Called after every message: reports losses, and schedules the sending of the waiting messages.
  void followUp();

  detail::Hidden<Client> client;  // empty unless it is the shared instance
};

}  // namespace norvik
