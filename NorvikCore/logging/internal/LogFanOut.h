// NorvikCore/logging/internal/LogFanOut.h - stores the loggers, and hands each message to those that admit it.
//
// A message is handed to every logger that admits it, each on its own queue, and the next message is handed out when
// all of them are done. If all loggers that admit them take runs, several successive messages are handed to each logger
// at once.
//
// Threads: confined to the logging queue.
#pragma once

#include "NorvikCore/logging/DDLogRun.h"
#include "NorvikCore/logging/DDLoggerNode.h"
#include "NorvikCore/logging/internal/LogProgress.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/internal/Mailbox.h"
#include "NorvikCore/platform/kernel/internal/TickClock.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace norvik::detail {

class LogFanOut {
 public:
  explicit LogFanOut(kernel::TickClock& clock);

  void lt_addLogger(const Ref<DDLogger>& logger, int level);
  /// Returns false if the logger was not added.
  bool lt_removeLogger(const Ref<DDLogger>& logger);
  void lt_removeAllLoggers();
  void lt_flush();
  /// Hands out one message; returns when every logger that admits it is done.
  void lt_log(const DDLogMessage& message);
  /// Hands out letters, which hold records.
  void lt_read(LetterRun& letters);

  [[nodiscard]] const std::vector<Ref<DDLoggerNode>>& nodes() const noexcept { return loggers; }
  /// The progress of the letters that are being handed out; may be read on any thread.
  [[nodiscard]] const LogProgress& progress() const noexcept { return progress_; }

 private:
  using Nodes = std::vector<DDLoggerNode*>;
  enum class Admittance : std::uint8_t { nobody, runs, oneByOne };
  [[nodiscard]] Admittance admittance(const LogRecord& record) const noexcept;
  [[nodiscard]] static int flagOf(const LogRecord& record) noexcept;
  void admitting(int flag, Nodes& nodes) const;

  void handOut(const DDLogEntry& entry, const LogRecord* record);
  /// Calls `hand` for each of the nodes on its queue; returns when all are done.
  template <class Hand>
  void handToAll(const Nodes& nodes, const Hand& hand);
  [[nodiscard]] bool readOne(LetterRun& letters);
  [[nodiscard]] bool readSome(LetterRun& letters, std::size_t count);
  [[nodiscard]] bool finish(LetterRun& letters, std::size_t count) noexcept;

  std::uint32_t numProcessors;
  dispatch_group_t loggingGroup;
  std::vector<Ref<DDLoggerNode>> loggers;
  kernel::TickClock& clock_;
  LogProgress progress_;

  // The state of the letters that are being handed out. They are members so that their memory is reused.
  Nodes nodes_;
  DDLogEntry entries_[LetterRun::longest];
  std::size_t entriesFinished_ = 0;
  std::vector<std::vector<const DDLogEntry*>> runs_;  // one for each of nodes_
};

}  // namespace norvik::detail
