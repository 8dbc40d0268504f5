// NorvikCore/logging/DDLogMacros.h - one macro for each kind of message.
//
//   DDLogWarn("Date time component is non zero : %@", date);
//   DDLogVerbose("%@", expensiveDescription());      // not evaluated unless the level admits verbose messages
//
// Each macro first tests the level, with one relaxed load and a branch, and evaluates nothing else unless the level
// admits the message. It logs asynchronously with context 0, the source file, the function and the line. The level is
// the library's ddLogLevel. A file with a level of its own defines NK_LOG_LEVEL as an expression that converts to int,
// before this header, or redefines it at any later point:
//
//   #undef NK_LOG_LEVEL
//   #define NK_LOG_LEVEL Submission::ddLogLevel()
//
// Code that adds or flushes loggers also includes DDLog.h, or the header of a logger, which includes it.
#pragma once

#include "NorvikCore/logging/LogCall.h"
#include "NorvikCore/logging/LogLevel.h"

#ifndef NK_LOG_LEVEL
#define NK_LOG_LEVEL ::norvik::ddLogLevel
#endif

#define DDLogError(...) NK_LOG(::norvik::LOG_FLAG_ERROR, __VA_ARGS__)
#define DDLogWarn(...) NK_LOG(::norvik::LOG_FLAG_WARN, __VA_ARGS__)
#define DDLogInfo(...) NK_LOG(::norvik::LOG_FLAG_INFO, __VA_ARGS__)
#define DDLogDebug(...) NK_LOG(::norvik::LOG_FLAG_DEBUG, __VA_ARGS__)
#define DDLogVerbose(...) NK_LOG(::norvik::LOG_FLAG_VERBOSE, __VA_ARGS__)

#define NK_LOG(flag, ...)                                                                                             \
  do {                                                                                                                \
    if (const int nk_level = NK_LOG_LEVEL; (nk_level & flag) != 0) [[unlikely]]                                       \
      ::norvik::detail::logCall(nk_level, flag, __FILE__, static_cast<const char*>(__func__), __LINE__, __VA_ARGS__); \
  } while (false)
