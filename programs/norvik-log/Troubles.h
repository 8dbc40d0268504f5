// programs/norvik-log/Troubles.h - reports on standard error what could not be read, one sentence each. The program
// continues.
#pragma once

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace norvik_log {

/// Each sentence is written once. Synchronised.
class Troubles {
 public:
  /// Reports the file or other subject, and the reason. Control characters are shown as escapes.
  void report(std::string_view subject, std::string_view reason);
  /// The same, with the system's message for the error number.
  void report(std::string_view subject, std::string_view reason, int error);
  /// Writes information for the user that is not an error.
  void note(std::string_view subject, std::string_view text);
  [[nodiscard]] bool any() const noexcept { return any_; }

 private:
  std::atomic<bool> any_ = false;
  std::mutex mutex_;
  std::set<std::string> said_;
};

}  // namespace norvik_log
