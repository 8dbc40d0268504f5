// NorvikCore/logging/internal/LogProgress.h - the progress of each logger with the letters that are being handed out.
// After a crash of a logger it is used so that lines are neither lost nor written twice.
//
// Threads: written on the logging queue and the loggers' queues, read by any thread at any time.
#pragma once

#include <atomic>
#include <cstddef>

namespace norvik {
class DDLogger;
}

namespace norvik::detail {

class LogRecord;

class LogProgress {
 public:
  static constexpr std::size_t mostLoggers = 16;  // further loggers are not followed

  // Called by the writer. A null record means none.
  void begin(std::size_t index, const DDLogger* logger, const LogRecord* first) noexcept {
    if (index >= mostLoggers) return;
    loggers_[index].logger.store(logger, std::memory_order_relaxed);
    loggers_[index].next.store(first, std::memory_order_relaxed);
  }
  void begun(std::size_t count, const LogRecord* last) noexcept {
    count_.store(count < mostLoggers ? count : mostLoggers, std::memory_order_relaxed);
    last_.store(last, std::memory_order_release);
  }
  /// Sets the next record of the logger; null if it has processed all.
  void advance(std::size_t index, const LogRecord* next) noexcept {
    if (index < mostLoggers) loggers_[index].next.store(next, std::memory_order_release);
  }
  /// Ends the progress at `last`, because letters up to this one may now be reused by other senders.
  void ended(const LogRecord* last) noexcept {
    if (last_.load(std::memory_order_relaxed) == last) last_.store(nullptr, std::memory_order_release);
  }

  /// The last letter that is being handed out; null if there is none.
  [[nodiscard]] const LogRecord* last() const noexcept { return last_.load(std::memory_order_acquire); }
  /// True if the logger gets some of the letters and has not processed all; `next` is then the first that it has not.
  [[nodiscard]] bool isAt(const DDLogger* logger, const LogRecord*& next) const noexcept {
    next = nullptr;
    const std::size_t count = count_.load(std::memory_order_relaxed);
    for (std::size_t i = 0; i < count; ++i) {
      if (loggers_[i].logger.load(std::memory_order_relaxed) != logger) continue;
      next = loggers_[i].next.load(std::memory_order_acquire);
      if (next) return true;
    }
    return false;
  }

 private:
  struct Place {
    std::atomic<const DDLogger*> logger{nullptr};
    std::atomic<const LogRecord*> next{nullptr};
  };
  Place loggers_[mostLoggers];
  std::atomic<std::size_t> count_{0};
  std::atomic<const LogRecord*> last_{nullptr};
};

}  // namespace norvik::detail
