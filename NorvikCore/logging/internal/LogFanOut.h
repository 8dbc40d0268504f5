// NorvikCore/logging/internal/LogFanOut.h - the loggers, and how each message comes to those that admit it.
//
// A message goes to every logger that admits it, each on its own queue, and the next message follows when all of them
// are done. Where all that admit a message take runs, several messages that follow one another go to each of them at
// once.
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
  /// False where it is not there.
  bool lt_removeLogger(const Ref<DDLogger>& logger);
  void lt_removeAllLoggers();
  void lt_flush();
  /// One message; returns when every logger that admits it is done.
  void lt_log(const DDLogMessage& message);
  /// Letters that hold records.
  void lt_read(LetterRun& letters);

  [[nodiscard]] const std::vector<Ref<DDLoggerNode>>& nodes() const noexcept { return loggers; }
  /// Of what is being handed out; from any thread.
  [[nodiscard]] const LogProgress& progress() const noexcept { return progress_; }

 private:
  using Nodes = std::vector<DDLoggerNode*>;
  enum class Admittance : std::uint8_t { nobody, runs, oneByOne };
  [[nodiscard]] Admittance admittance(const LogRecord& record) const noexcept;
  [[nodiscard]] static int flagOf(const LogRecord& record) noexcept;
  void admitting(int flag, Nodes& nodes) const;

  void handOut(const DDLogEntry& entry, const LogRecord* record);
  /// Calls `hand` for each of the nodes on its queue, and returns when all are done.
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

  // What is being handed out; kept for its memory.
  Nodes nodes_;
  DDLogEntry entries_[LetterRun::longest];
  std::size_t entriesFinished_ = 0;
  std::vector<std::vector<const DDLogEntry*>> runs_;  // one for each of the nodes
};

}  // namespace norvik::detail
