// programs/norvik-log/TimePhrase.h - parses the instants that users type.
//
//   now   today   yesterday   monday   14:00   yesterday 14:00   2 hours ago   90s ago
//   2021-05-10   2021-05-10 14:30   2021-05-10 13:30:12.045   2021-05-10T13:30:12.045Z   2021/05/10 14:30:12:045
//
// A time without a day is today's. A day without a time is its first moment. The name of a weekday is the last such
// day, which may be today. "days ago" and "weeks ago" keep the time of day. Without Z or an offset such as +01:00, a
// time is a wall time of the zone.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "WallClock.h"

namespace norvik_log {

/// An invalid phrase; what() lists the valid ones.
class PhraseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Selects one of the two instants of a wall time that occurred twice.
enum class Pass { First, Second };

/// Milliseconds since 1970. Throws PhraseError.
[[nodiscard]] std::int64_t instantOfPhrase(std::string_view phrase, WallClock clock, std::int64_t now, Pass pass);

}  // namespace norvik_log
