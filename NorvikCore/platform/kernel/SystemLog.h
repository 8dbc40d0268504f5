// NorvikCore/platform/kernel/SystemLog.h - lines on the system console, which is standard error.
//
//   kernel::writeSystemLog("Unable to open the employer's folder");
//   // 2026-11-21 01:22:14.123+0000 payrun[4711:4713] Unable to open the employer's folder
//
// For what must be said where logging itself is in trouble. A line holds the time in UTC, process name, process id and
// thread id.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::kernel {

/// Writes one line by one system call, so that lines of several threads and processes do not mix; a line feed is added
/// unless the text ends with one. Takes no lock, allocates nothing, leaves errno alone and works in a forked child.
/// What standard error does not take is lost: nothing is raised, a closed pipe does no harm, a full one is waited for
/// no longer than a second (if it blocks, and takes only the beginning of a text over 4,000 bytes: until it takes the
/// rest).
NK_EXPORT void writeSystemLog(std::string_view text) noexcept;

/// Takes the lines of all threads for itself while it lives, so that a test can read them and standard error stays
/// clean. Of several, the latest made gets them. Synchronised.
class NK_EXPORT SystemLogCapture {
 public:
  SystemLogCapture();
  ~SystemLogCapture();
  SystemLogCapture(const SystemLogCapture&) = delete;
  SystemLogCapture& operator=(const SystemLogCapture&) = delete;

  /// The texts so far, in order, without time, process and line feed.
  [[nodiscard]] std::vector<std::string> lines() const;

  /// Waits until there are `count` of them; false when `seconds` pass first.
  [[nodiscard]] bool waitForLines(std::size_t count, double seconds = 10) const;

 private:
  friend void writeSystemLog(std::string_view) noexcept;
  [[nodiscard]] static bool take(std::string_view text);

  struct State;
  norvik::detail::Hidden<State> state_;
};

}  // namespace norvik::kernel
