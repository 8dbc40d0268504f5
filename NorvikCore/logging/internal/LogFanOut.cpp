#include "NorvikCore/logging/internal/LogFanOut.h"

#include "NorvikCore/logging/internal/LogRecord.h"
#include "NorvikCore/platform/kernel/FatalSignals.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/HostInfo.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace norvik::detail {

LogFanOut::LogFanOut(kernel::TickClock& clock)
    : numProcessors(std::max<std::uint32_t>(kernel::processorCount(), 1)),
      loggingGroup(dispatch_group_create()),
      clock_(clock) {
  loggers.reserve(4);
}

void LogFanOut::lt_addLogger(const Ref<DDLogger>& logger, int level) {
  dispatch_queue_t queue = logger->loggerQueue();
  if (!queue) {
    const std::optional<NSString> name = logger->loggerName();
    queue = dispatch_queue_create(name ? name->utf8().c_str() : nullptr);
  }
  loggers.push_back(DDLoggerNode::nodeWithLogger(logger, queue, level));
  dispatch_async(queue, [logger] { logger->didAddLogger(); });
}

bool LogFanOut::lt_removeLogger(const Ref<DDLogger>& logger) {
  const auto found =
      std::find_if(loggers.begin(), loggers.end(), [&](const auto& node) { return node->logger() == logger; });
  if (found == loggers.end()) return false;
  dispatch_async((*found)->loggerQueue(), [logger] { logger->willRemoveLogger(); });
  loggers.erase(found);
  return true;
}

void LogFanOut::lt_removeAllLoggers() {
  for (const Ref<DDLoggerNode>& node : loggers) {
    dispatch_async(node->loggerQueue(), [logger = node->logger()] { logger->willRemoveLogger(); });
  }
  loggers.clear();
}

void LogFanOut::lt_flush() {
  for (const Ref<DDLoggerNode>& node : loggers) {
    dispatch_group_async(loggingGroup, node->loggerQueue(), [logger = node->logger()] { logger->flush(); });
  }
  dispatch_group_wait(loggingGroup, DISPATCH_TIME_FOREVER);
}

/// Compares numbers, not bits. With the usual flags and levels this admits exactly the flags that a level contains.
void LogFanOut::admitting(int flag, Nodes& nodes) const {
  nodes.clear();
  for (const Ref<DDLoggerNode>& node : loggers) {
    if (flag <= node->logLevel()) nodes.push_back(node.get());
  }
}

/// With several processors, the last logger is called on this thread if its queue is idle, and all others run on other
/// threads meanwhile. An exception that leaves a logger ends the process, on whichever thread it runs.
template <class Hand>
void LogFanOut::handToAll(const Nodes& nodes, const Hand& hand) {
  const std::size_t inParallel = numProcessors < 2 || nodes.empty() ? 0 : nodes.size() - 1;
  const auto handOver = [&hand](std::size_t i) {
    kernel::coverThread();
    try {
      hand(i);
    } catch (...) {
      std::terminate();  // here, while the exception is still known and can be printed
    }
  };
  for (std::size_t i = 0; i < inParallel; ++i) {
    dispatch_group_async(loggingGroup, nodes[i]->loggerQueue(), [&handOver, i] { handOver(i); });
  }
  for (std::size_t i = inParallel; i < nodes.size(); ++i) {
    dispatch_sync(nodes[i]->loggerQueue(), [&handOver, i] { handOver(i); });
  }
  if (inParallel > 0) dispatch_group_wait(loggingGroup, DISPATCH_TIME_FOREVER);
}

void LogFanOut::lt_log(const DDLogMessage& message) {
  DDLogEntry entry;
  entry.message_.storeRelaxed(const_cast<DDLogMessage*>(&message));
  handOut(entry, nullptr);
}

/// `record` is that of a letter, or null.
void LogFanOut::handOut(const DDLogEntry& entry, const LogRecord* record) {
  Nodes nodes;
  admitting(entry.logFlag(), nodes);
  const DDLogEntry* const one = &entry;
  for (std::size_t i = 0; i < nodes.size(); ++i) progress_.begin(i, nodes[i]->logger().get(), record);
  progress_.begun(nodes.size(), record);
  handToAll(nodes, [&](std::size_t i) {
    if (nodes[i]->takesRuns()) {
      (void)nodes[i]->logger()->logMessages({&one, 1});
    } else {
      nodes[i]->logger()->logMessage(entry.message());
    }
    progress_.advance(i, nullptr);
  });
}

int LogFanOut::flagOf(const LogRecord& record) noexcept {
  return record.made() ? record.made()->logFlag() : record.site().flag;
}

/// A message with a tag is handed out and released alone, because the tag may be of a class of the application.
LogFanOut::Admittance LogFanOut::admittance(const LogRecord& record) const noexcept {
  if (record.isOfNothing()) return Admittance::nobody;
  const int flag = flagOf(record);
  const bool isAlone = record.made() || record.hasTag();
  Admittance admitted = isAlone ? Admittance::oneByOne : Admittance::nobody;
  for (const Ref<DDLoggerNode>& node : loggers) {
    if (flag > node->logLevel()) continue;
    if (isAlone || !node->takesRuns()) return Admittance::oneByOne;
    admitted = Admittance::runs;
  }
  return admitted;
}

void LogFanOut::lt_read(LetterRun& letters) {
  kernel::coverThread();
  clock_.read();
  for (;;) {
    std::size_t count = 0;
    while (count < letters.count() && admittance(LogRecord::of(letters[count])) != Admittance::oneByOne) ++count;
    if (!(count > 0 ? readSome(letters, count) : readOne(letters))) return;
  }
}

bool LogFanOut::readOne(LetterRun& letters) {
  const LogRecord& record = LogRecord::of(letters.first());
  entriesFinished_ = 0;
  if (const DDLogMessage* made = record.made()) {
    DDLogEntry entry;
    entry.message_.storeRelaxed(const_cast<DDLogMessage*>(made));
    handOut(entry, &record);
  } else {
    entries_[0].record_ = &record;
    entries_[0].wallNanoseconds_ = clock_.wallNanoseconds(record.ticks());
    handOut(entries_[0], &record);
  }
  return finish(letters, 1);
}

/// Hands a run to each logger that admits any of the letters. If only one logger does, its letters are released as it
/// processes them; otherwise they are released when all loggers are done with all letters.
bool LogFanOut::readSome(LetterRun& letters, std::size_t count) {
  nodes_.clear();
  entriesFinished_ = 0;
  if (runs_.size() < loggers.size()) runs_.resize(loggers.size());
  for (const Ref<DDLoggerNode>& node : loggers) {
    std::vector<const DDLogEntry*>& run = runs_[nodes_.size()];
    run.clear();
    for (std::size_t i = 0; i < count; ++i) {
      const LogRecord& record = LogRecord::of(letters[i]);
      if (record.isOfNothing() || flagOf(record) > node->logLevel()) continue;
      run.push_back(&entries_[i]);
    }
    if (!run.empty()) nodes_.push_back(node.get());
  }
  for (std::size_t i = 0; i < count; ++i) {
    entries_[i].record_ = &LogRecord::of(letters[i]);
    entries_[i].wallNanoseconds_ =
        entries_[i].record_->isOfNothing() ? 0 : clock_.wallNanoseconds(entries_[i].record_->ticks());
  }

  for (std::size_t i = 0; i < nodes_.size(); ++i) progress_.begin(i, nodes_[i]->logger().get(), runs_[i][0]->record_);
  progress_.begun(nodes_.size(), entries_[count - 1].record_);

  const auto hand = [this](std::size_t i, std::size_t from) {
    const std::vector<const DDLogEntry*>& run = runs_[i];
    const std::size_t left = run.size() - from;
    const std::size_t taken =
        std::clamp<std::size_t>(nodes_[i]->logger()->logMessages({run.data() + from, left}), 1, left);
    progress_.advance(i, taken < left ? run[from + taken]->record_ : nullptr);
    return taken;
  };
  if (nodes_.size() == 1) {
    const std::vector<const DDLogEntry*>& run = runs_[0];
    for (std::size_t handed = 0, finished = 0; handed < run.size();) {
      dispatch_sync(nodes_[0]->loggerQueue(), [&]() noexcept { handed += hand(0, handed); });
      const std::size_t upTo = handed < run.size() ? static_cast<std::size_t>(run[handed] - entries_) : count;
      if (!finish(letters, upTo - std::exchange(finished, upTo))) return false;
    }
    return true;
  }
  const std::uint32_t process = kernel::forkGeneration();
  handToAll(nodes_, [&](std::size_t i) {
    // If a logger forks, the messages that it has not taken are handled by its parent.
    for (std::size_t handed = 0; handed < runs_[i].size() && kernel::forkGeneration() == process;) {
      handed += hand(i, handed);
    }
  });
  return finish(letters, count);
}

/// Releases the messages, and returns their letters to the mailbox.
bool LogFanOut::finish(LetterRun& letters, std::size_t count) noexcept {
  progress_.ended(&LogRecord::of(letters[count - 1]));
  for (std::size_t i = 0; i < count; ++i) {
    DDLogEntry& entry = entries_[entriesFinished_ + i];
    if (DDLogMessage* made = entry.message_.loadRelaxed()) {
      entry.message_.storeRelaxed(nullptr);
      (void)Ref<DDLogMessage>::adopt(made);
    }
    LogRecord::of(letters[i]).dispose();
  }
  entriesFinished_ += count;
  return letters.finish(count);
}

}  // namespace norvik::detail
