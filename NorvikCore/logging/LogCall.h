// NorvikCore/logging/LogCall.h - what a log call does on the caller's side. The log macros and DDLog::log() use it;
// users need not read it.
//
// It needs neither the dispatcher nor the classes of the log, so that a file that only logs does not compile them.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Format.h"

#include <cstdint>
#include <string_view>

namespace norvik {

class Value;

namespace detail {

/// The source location and the kind of a log call.
struct LogSite {
  int level, flag, context, line;
  const char *file, *function;
};

/// The length of a literal format and the number of its arguments, in one register, so that the code of a call is
/// small.
struct LogSizes {
  std::uint32_t format, arguments;
};

/// Enqueues copies of the arguments. `tag` may be null.
NK_EXPORT NK_NO_PLT void logLater(const LogSite& site, const Value* tag, const char* format, LogSizes sizes,
                                  const FormatArgument* arguments);
/// Forms the text during the call.
NK_EXPORT void logNow(bool asynchronous, const LogSite& site, const Value* tag, std::string_view format,
                      FormatArguments arguments);

template <class... Args>
void logTagged(bool asynchronous, const LogSite& site, const Value* tag, FormatStringFor<Args...> format,
               const Args&... arguments) {
  if (format.isAbsent()) return;
  const FormatArgumentList list(arguments...);
  if (asynchronous && format.canWait()) {
    logLater(site, tag, format.view().data(), {static_cast<std::uint32_t>(format.view().size()), sizeof...(Args)},
             FormatArguments(list).data());
  } else {
    logNow(asynchronous, site, tag, format.view(), list);
  }
}

/// The call of a log macro: asynchronous, with context 0 and without a tag.
template <FormatArgumentType... Args>
void logCall(int level, int flag, const char* file, const char* function, int line, FormatStringFor<Args...> format,
             const Args&... arguments) {
  logTagged(true, {level, flag, 0, line, file, function}, nullptr, format, arguments...);
}
inline void logCall(int level, int flag, const char* file, const char* function, int line, const RuntimeFormat& format,
                    FormatArguments arguments) {
  if (format.text) logNow(true, {level, flag, 0, line, file, function}, nullptr, format.text->view(), arguments);
}

}  // namespace detail
}  // namespace norvik
