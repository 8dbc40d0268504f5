// programs/norvik-log/Filter.h - which messages are wanted.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "LogLine.h"
#include "Pattern.h"

namespace norvik_log {

struct Filter {
  std::optional<int> level;           // this flag of LogLevel.h and the more severe; any other number: that alone
  std::optional<std::int64_t> since;  // milliseconds since 1970: at this moment or later
  std::optional<std::int64_t> until;  // before this one
  std::optional<std::string> thread;  // a thread's number or name, a queue's label, or both with a colon between
  std::optional<std::string> text;    // in the message's text
  bool ignoresCase = false;           // in `text` and `pattern`
  std::shared_ptr<const Pattern> pattern;

  [[nodiscard]] bool admitsLevel(int flag) const noexcept;
  [[nodiscard]] bool admitsTime(const std::optional<std::int64_t>& time) const noexcept;
};

/// A filter in use by one thread.
class FilterCheck {
 public:
  explicit FilterCheck(const Filter& filter);

  [[nodiscard]] const Filter& filter() const noexcept { return filter_; }
  /// By everything but the time.
  [[nodiscard]] bool admits(const Record& record);
  /// How often the pattern was given up on since the last call.
  [[nodiscard]] std::size_t takeGivenUp();
  /// `text` where case is ignored.
  [[nodiscard]] Pattern::Matcher* caselessText() noexcept { return caseless_ ? &*caseless_ : nullptr; }
  [[nodiscard]] Pattern::Matcher* pattern() noexcept { return pattern_ ? &*pattern_ : nullptr; }

 private:
  [[nodiscard]] bool admitsThread(const Record& record) const;

  const Filter& filter_;
  std::unique_ptr<Pattern> caselessPattern_;
  std::optional<Pattern::Matcher> caseless_, pattern_;
  std::string held_;
};

}  // namespace norvik_log
