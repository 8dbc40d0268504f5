// NorvikCore/logging/internal/ExceptionReports.h - reports exceptions that a logger catches on the system console, at
// most ten per process, so that a lasting failure does not fill it.
//
//   ExceptionReports reports{"DDFileLogger.logMessage"};     // one for all loggers of a class
//   try { write(line); } catch (const NSException& exception) { reports.add(exception); }
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/kernel/AtomicWord.h"

#include <cstdint>

namespace norvik {

class NSException;

namespace detail {

class ExceptionReports {
 public:
  static constexpr std::int32_t most = 10;

  /// `where` names the operation; it must live as long as this object.
  explicit constexpr ExceptionReports(const char* where) noexcept : where_(where) {}
  void add(const NSException& exception);

 private:
  const char* const where_;
  AtomicWord<std::int32_t> count_;  // stops one past the limit
};

}  // namespace detail
}  // namespace norvik
