// programs/norvik-log/TimePhrase.h - instants as people type them.
//
//   now   today   yesterday   monday   14:00   yesterday 14:00   2 hours ago   90s ago
//   2021-05-10   2021-05-10 14:30   2021-05-10 13:30:12.045   2021-05-10T13:30:12.045Z   2021/05/10 14:30:12:045
//
// A time alone is of today; a day alone is its first moment; the name of a weekday is the last such day, today among
// them. Days and weeks ago lead to the same time of day. Without Z or an offset such as +01:00 it is what the zone's
// clocks show.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "WallClock.h"

namespace norvik_log {

/// A phrase that is no time; what() says which are.
class PhraseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Which of two instants a time has that the clocks showed twice.
enum class Pass { First, Second };

/// Milliseconds since 1970. Throws PhraseError.
[[nodiscard]] std::int64_t instantOfPhrase(std::string_view phrase, WallClock clock, std::int64_t now, Pass pass);

}  // namespace norvik_log
