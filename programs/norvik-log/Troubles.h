// programs/norvik-log/Troubles.h - what could not be read, on standard error, a sentence each; the rest goes on.
#pragma once

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace norvik_log {

/// Each sentence is said once. Synchronised.
class Troubles {
 public:
  /// The file, or whatever it is, and the reason. Control characters are shown as escapes.
  void report(std::string_view subject, std::string_view reason);
  /// The same with what the system says of the error's number.
  void report(std::string_view subject, std::string_view reason, int error);
  /// What the user should know, which is no trouble.
  void note(std::string_view subject, std::string_view text);
  [[nodiscard]] bool any() const noexcept { return any_; }

 private:
  std::atomic<bool> any_ = false;
  std::mutex mutex_;
  std::set<std::string> said_;
};

}  // namespace norvik_log
