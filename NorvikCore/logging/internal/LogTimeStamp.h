// NorvikCore/logging/internal/LogTimeStamp.h - the time stamps of log lines: "yyyy/MM/dd HH:mm:ss:SSS" in local time.
//
// Most lines fall into the minute of the line before: then only seconds and milliseconds are written anew. The
// milliseconds are cut off, not rounded.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"

#include <cstddef>
#include <cstdint>

namespace norvik::detail {

/// Confined to one thread at a time.
class NK_EXPORT LogTimeStamp {
 public:
  static constexpr std::size_t length = 23;

  /// Writes `length` bytes at `to`, which years 0 to 9999 need.
  void write(Date date, char* to) noexcept;

 private:
  void beginMinute(std::int64_t unixMinute) noexcept;

  std::int64_t minute_ = INT64_MIN;
  char prefix_[17];  // "yyyy/MM/dd HH:mm:"
};

}  // namespace norvik::detail
