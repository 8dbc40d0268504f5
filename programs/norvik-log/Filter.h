// programs/norvik-log/Filter.h - the conditions that select messages.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "LogLine.h"
#include "Pattern.h"

namespace norvik_log {

struct Filter {
  std::optional<int> level;           // a flag of LogLevel.h: this and more severe levels; another number: only it
  std::optional<std::int64_t> since;  // milliseconds since 1970: at this time or later
  std::optional<std::int64_t> until;  // before this time
  std::optional<std::string> thread;  // a thread's number or name, a queue's label, or label:thread
  std::optional<std::string> text;    // contained in the message's text
  bool ignoresCase = false;           // applies to `text` and `pattern`
  std::shared_ptr<const Pattern> pattern;

  [[nodiscard]] bool admitsLevel(int flag) const noexcept;
  [[nodiscard]] bool admitsTime(const std::optional<std::int64_t>& time) const noexcept;
};

/// A filter for the use of one thread.
class FilterCheck {
 public:
  explicit FilterCheck(const Filter& filter);

  [[nodiscard]] const Filter& filter() const noexcept { return filter_; }
  /// Checks all conditions except the time.
  [[nodiscard]] bool admits(const Record& record);
  /// The number of searches for the pattern that were given up since the last call.
  [[nodiscard]] std::size_t takeGivenUp();
  /// The matcher for `text` if case is ignored, else null.
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
