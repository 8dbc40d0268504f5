// NorvikCore/logging/DDLogRun.h - several messages at once, for loggers that write them with one call.
//
//   class TotalLogger : public DDAbstractLogger {
//     NK_OBJECT(TotalLogger, DDAbstractLogger)
//     bool takesRuns() const noexcept override { return true; }
//     std::size_t logMessages(const DDLogRun& run) override {
//       std::string lines;
//       for (const DDLogEntry& entry : run) {
//         entry.appendText(lines);
//         lines += '\n';
//       }
//       send(lines);
//       return run.count();
//     }
//   };
//
// An entry is a message for which no object exists yet: reading it and appending its text allocates nothing of its own.
// message() creates the object, once for all loggers, for code that needs one.
//
// A run and its entries are valid during the call that receives them. Any number of threads may read them.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/AtomicWord.h"
#include "NorvikCore/platform/values/Date.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace norvik {

/// Has the properties of DDLogMessage, under the same names. The text is formed when it is requested.
class NK_EXPORT DDLogEntry {
 public:
  DDLogEntry(const DDLogEntry&) = delete;
  DDLogEntry& operator=(const DDLogEntry&) = delete;

  [[nodiscard]] int logLevel() const noexcept;
  [[nodiscard]] int logFlag() const noexcept;
  [[nodiscard]] int logContext() const noexcept;
  [[nodiscard]] Date timestamp() const noexcept;
  /// The path of the source file; null if the call gave none.
  [[nodiscard]] const char* file() const noexcept;
  [[nodiscard]] const char* function() const noexcept;
  [[nodiscard]] int lineNumber() const noexcept;
  [[nodiscard]] std::uint32_t machThreadID() const noexcept;
  [[nodiscard]] std::string_view threadName() const noexcept;
  [[nodiscard]] std::string_view queueLabel() const noexcept;
  /// Forms logMsg.
  [[nodiscard]] NSString text() const;
  /// Appends it as UTF-8.
  void appendText(std::string& line) const;

  /// The message as an object, which may be retained.
  [[nodiscard]] const DDLogMessage& message() const;

 private:
  friend class detail::LogFanOut;
  DDLogEntry() noexcept = default;
  ~DDLogEntry() = default;

  const detail::LogRecord* record_ = nullptr;
  std::int64_t wallNanoseconds_ = 0;
  mutable detail::AtomicWord<DDLogMessage*> message_;
};

class NK_EXPORT DDLogRun {
 public:
  class Iterator {
   public:
    const DDLogEntry& operator*() const noexcept { return **at_; }
    const DDLogEntry* operator->() const noexcept { return *at_; }
    Iterator& operator++() noexcept {
      ++at_;
      return *this;
    }
    friend bool operator==(Iterator a, Iterator b) noexcept { return a.at_ == b.at_; }

   private:
    friend class DDLogRun;
    explicit Iterator(const DDLogEntry* const* at) noexcept : at_(at) {}
    const DDLogEntry* const* at_;
  };

  /// At least 1.
  [[nodiscard]] std::size_t count() const noexcept { return count_; }
  [[nodiscard]] const DDLogEntry& operator[](std::size_t index) const noexcept { return *entries_[index]; }
  [[nodiscard]] Iterator begin() const noexcept { return Iterator(entries_); }
  [[nodiscard]] Iterator end() const noexcept { return Iterator(entries_ + count_); }

 private:
  friend class detail::LogFanOut;
  DDLogRun(const DDLogEntry* const* entries, std::size_t count) noexcept : entries_(entries), count_(count) {}

  const DDLogEntry* const* entries_;
  std::size_t count_;
};

}  // namespace norvik
