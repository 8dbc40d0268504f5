// NorvikCore/logging/internal/LogProgress.h - how far each logger is with the letters that are being handed out, for
// the end of a process in which a logger has crashed: so that lines are neither lost nor written twice.
//
// Threads: written by the logging queue and the loggers' queues, read by any thread at any time.
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
  static constexpr std::size_t mostLoggers = 16;  // those beyond are not followed

  // The writer's. A null record is none.
  void begin(std::size_t index, const DDLogger* logger, const LogRecord* first) noexcept {
    if (index >= mostLoggers) return;
    loggers_[index].logger.store(logger, std::memory_order_relaxed);
    loggers_[index].next.store(first, std::memory_order_relaxed);
  }
  void begun(std::size_t count, const LogRecord* last) noexcept {
    count_.store(count < mostLoggers ? count : mostLoggers, std::memory_order_relaxed);
    last_.store(last, std::memory_order_release);
  }
  /// The record that the logger has next; null where it has all.
  void advance(std::size_t index, const LogRecord* next) noexcept {
    if (index < mostLoggers) loggers_[index].next.store(next, std::memory_order_release);
  }
  /// Letters up to this one belong to other senders again.
  void ended(const LogRecord* last) noexcept {
    if (last_.load(std::memory_order_relaxed) == last) last_.store(nullptr, std::memory_order_release);
  }

  /// The last letter that is being handed out; null where none is.
  [[nodiscard]] const LogRecord* last() const noexcept { return last_.load(std::memory_order_acquire); }
  /// True where the logger gets some of them and is not done with all: then `next` is the first that it does not have.
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
