// NorvikCore/platform/foundation/NSLog.h - a line on the system console, in the platform's format language.
//
//   NSLog("Error creating %@: %@", path, error);
//   // 2026-11-21 01:22:14.123+0000 payrun[4711:4713] Error creating /var/pay: Permission denied
//
// For messages to the operator of the program rather than to the reader of its log. kernel/SystemLog.h describes the
// content of a line, what happens if standard error accepts none, and how a test reads the lines; values/Format.h
// describes formats.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Format.h"

namespace norvik {

namespace detail {
NK_EXPORT void logFormatted(std::string_view format, FormatArguments arguments);
}

/// Writes one line; an absent format writes nothing. Any thread, also in a forked child. Raises only what the
/// description of an argument raises.
template <class... Args>
void NSLog(FormatStringFor<Args...> format, const Args&... arguments) {
  if (!format.isAbsent()) detail::logFormatted(format.view(), FormatArgumentList(arguments...));
}

}  // namespace norvik
