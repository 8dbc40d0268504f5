// NorvikCore/platform/kernel/SystemLog.h - lines on the system console, which is standard error.
//
//   kernel::writeSystemLog("Unable to open the employer's folder");
//   // 2026-11-21 01:22:14.123+0000 payrun[4711:4713] Unable to open the employer's folder
//
// For messages when logging itself has failed. A line contains the time in UTC, process name, process id and thread id.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::kernel {

/// Writes one line by one system call, so that lines of several threads and processes do not mix; adds a line feed
/// unless the text ends with one. Takes no lock, allocates nothing, preserves errno and works in a forked child. What
/// standard error does not accept is lost: nothing is raised, and a closed pipe does no harm. The call waits at most a
/// second for a full pipe. The exception is a blocking pipe that accepts only the beginning of a text over 4,000 bytes:
/// then it waits until the rest is accepted.
NK_EXPORT void writeSystemLog(std::string_view text) noexcept;

/// Captures the lines of all threads while it lives, so that a test can read them and nothing is written to standard
/// error. If several exist, the latest receives the lines. Synchronised.
class NK_EXPORT SystemLogCapture {
 public:
  SystemLogCapture();
  ~SystemLogCapture();
  SystemLogCapture(const SystemLogCapture&) = delete;
  SystemLogCapture& operator=(const SystemLogCapture&) = delete;

  /// The texts so far, in order, without time, process and line feed.
  [[nodiscard]] std::vector<std::string> lines() const;

  /// Waits until there are `count` lines; false if `seconds` pass first.
  [[nodiscard]] bool waitForLines(std::size_t count, double seconds = 10) const;

 private:
  friend void writeSystemLog(std::string_view) noexcept;
  [[nodiscard]] static bool take(std::string_view text);

  struct State;
  norvik::detail::Hidden<State> state_;
};

}  // namespace norvik::kernel
