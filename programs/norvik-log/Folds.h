// programs/norvik-log/Folds.h - finds the places in a log where the clocks were set back. After such a place, wall
// times that occurred twice are second occurrences.
//
// The times in the log show such a place: a time is more than a minute earlier than the previous time, and lies in an
// hour that occurred twice. Before the first such place, all of these wall times are first occurrences.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "WallClock.h"

namespace norvik_log {

class Folds {
 public:
  explicit Folds(const WallClock& clock) : clock_(clock) {}

  /// Scans the next lines of the log. They must be whole lines; `offset` is their position in the log.
  void pass(std::string_view lines, std::int64_t offset);
  /// `offset` must be in lines that pass() has scanned.
  [[nodiscard]] bool isSecondPass(std::int64_t offset, std::int64_t wallTime) const noexcept;

 private:
  struct Fold {
    std::int64_t offset, wallTime;
  };

  [[nodiscard]] bool mayFold(std::int64_t from, std::int64_t to) const noexcept;

  WallClock clock_;
  std::optional<std::int64_t> last_;  // the wall time of the last line that has a time
  std::vector<Fold> folds_;
};

}  // namespace norvik_log
