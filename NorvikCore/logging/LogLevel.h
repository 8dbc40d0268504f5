// NorvikCore/logging/LogLevel.h - the kinds of log messages, the levels that admit them, and the library's own level.
//
//   ddLogLevel = LOG_LEVEL_VERBOSE;      // any thread, any time
//   if (ddLogLevel & LOG_FLAG_INFO) ...  // one relaxed load, one test
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/AtomicWord.h"

namespace norvik {

/// The kind of a message: exactly one of these.
enum LogFlag : int {
  LOG_FLAG_ERROR = 1,
  LOG_FLAG_WARN = 2,
  LOG_FLAG_INFO = 4,
  LOG_FLAG_DEBUG = 8,
  LOG_FLAG_VERBOSE = 16,
};

/// What code or a logger admits: the sum of the admitted flags.
enum LogLevel : int {
  LOG_LEVEL_OFF = 0,
  LOG_LEVEL_ERROR = 1,
  LOG_LEVEL_WARN = 3,
  LOG_LEVEL_INFO = 7,
  LOG_LEVEL_DEBUG = 15,
  LOG_LEVEL_VERBOSE = 31,
};

/// A level that any thread may read and set at any time. A read costs as much as a plain load. Synchronised.
class AtomicLogLevel {
 public:
  constexpr explicit AtomicLogLevel(int level) noexcept : level_(level) {}

  operator int() const noexcept {  // NOLINT(google-explicit-constructor): it reads as the level that it holds
    return level_.loadRelaxed();
  }
  AtomicLogLevel& operator=(int level) noexcept {
    level_.storeRelaxed(level);
    return *this;
  }

 private:
  detail::AtomicWord<int> level_;
};

/// The level of the library's own code, and of the log macros unless a file chooses another (DDLogMacros.h). Initially
/// 3: errors and warnings.
extern NK_EXPORT AtomicLogLevel ddLogLevel;

}  // namespace norvik
