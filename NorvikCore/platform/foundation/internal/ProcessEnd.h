// NorvikCore/platform/foundation/internal/ProcessEnd.h - what happens when the process ends, and in which order.
//
// 1. The platform posts NSApplicationWillTerminateNotification, unless the application has posted it.
// 2. The program's static objects are destroyed, in part also before 1.
// 3. The functions given to atProcessEnd() are called: the last chance to bring to disk what is still in memory.
// 4. The function given to atLastProcessEnd() is called: files that those functions may have written to are closed.
//
// None of 1 and 3 happens in a child made by fork() after the first of these was asked for.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik::detail {

/// Calls `function` after everything else, in the order of the requests. It must not raise; it runs on the thread that
/// ends the process, which may be any thread and may hold any lock.
NK_EXPORT void atProcessEnd(void (*function)());

/// Calls those functions now, and again when the process ends: for a component that they need, and whose libraries are
/// finished before this one. At the end of the process.
NK_EXPORT void callEndFunctions();

/// Calls `function` at the very end, in a child made by fork() too if it ends by exit(). There is one such function.
void atLastProcessEnd(void (*function)());

/// Makes sure that step 1 takes place; for the default notification center.
void postTerminationAtExit();

/// To be told of each notification of the default center before its observers are: remembers that the last one has been
/// posted.
void noteNotification(const NSString& name) noexcept;

}  // namespace norvik::detail
