// NorvikCore/logging/internal/LibraryWarning.h - logs warnings of the library's own code, asynchronously, if the
// library's level admits them.
//
//   if (detail::libraryWarnings()) [[unlikely]] {
//     detail::libraryWarning("Categories/NSDate+Norvik", "nk_nearestStartOfDayWithLoggedWarning:", __LINE__,
//                            "Date time component is non zero : %@", date);
//   }
//
// `file` is the source's name in the log, `operation` the selector text with its colons; both are literals.
#pragma once

#include "NorvikCore/logging/DDLog.h"

namespace norvik::detail {

/// One relaxed load. Test it before the arguments of a warning are created.
[[nodiscard]] inline bool libraryWarnings() noexcept { return (ddLogLevel & LOG_FLAG_WARN) != 0; }

template <class... Args>
void libraryWarning(const char* file, const char* operation, int line, FormatStringFor<Args...> format,
                    const Args&... arguments) {
  const int level = ddLogLevel;
  if ((level & LOG_FLAG_WARN) == 0) return;
  DDLog::log(true, level, LOG_FLAG_WARN, 0, file, operation, line, nullptr, format, arguments...);
}

}  // namespace norvik::detail
