// programs/norvik-log/Folds.h - where in a log the clocks were set back: from there on, times that they showed twice
// are the second ones.
//
// The times themselves say it: where one is over a minute earlier than the one before, in an hour that was shown twice.
// Without such a place all are the first ones.
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

  /// Looks at the next lines of the log, which are whole and at `offset` in it.
  void pass(std::string_view lines, std::int64_t offset);
  /// Of a place that pass() came by.
  [[nodiscard]] bool isSecondPass(std::int64_t offset, std::int64_t wallTime) const noexcept;

 private:
  struct Fold {
    std::int64_t offset, wallTime;
  };

  [[nodiscard]] bool mayFold(std::int64_t from, std::int64_t to) const noexcept;

  WallClock clock_;
  std::optional<std::int64_t> last_;  // the wall time of the last line with one
  std::vector<Fold> folds_;
};

}  // namespace norvik_log
