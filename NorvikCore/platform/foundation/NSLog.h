// NorvikCore/platform/foundation/NSLog.h - a line on the system console, in the platform's format language.
//
//   NSLog("Error creating %@: %@", path, error);
//   // 2026-11-21 01:22:14.123+0000 payrun[4711:4713] Error creating /var/pay: Permission denied
//
// For what concerns who runs the program rather than who reads its log. kernel/SystemLog.h says what a line holds, what
// happens where standard error takes none, and how a test reads the lines; values/Format.h says what a format may
// hold.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Format.h"

namespace norvik {

namespace detail {
NK_EXPORT void logFormatted(std::string_view format, FormatArguments arguments);
}

/// Writes one line; an absent format writes nothing. Any thread, a forked child too. Raises only what the description
/// of an argument raises.
template <class... Args>
void NSLog(FormatStringFor<Args...> format, const Args&... arguments) {
  if (!format.isAbsent()) detail::logFormatted(format.view(), FormatArgumentList(arguments...));
}

}  // namespace norvik
