// NorvikCore/platform/foundation/internal/ProcessEnd.h - the steps at the end of the process, in order.
//
// 1. The platform posts NSApplicationWillTerminateNotification, unless the application has posted it.
// 2. The program's static objects are destroyed. Some of them are destroyed before step 1.
// 3. The functions given to atProcessEnd() are called. They write to the disk what is still only in memory.
// 4. The function given to atLastProcessEnd() is called. It closes files that those functions may have written to.
//
// Steps 1 and 3 are skipped in a child made by fork() after the first request for them.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik::detail {

/// Calls `function` after everything else, in the order of the requests. It must not raise. It runs on the thread that
/// ends the process, which may be any thread and may hold any lock.
NK_EXPORT_FOR_TESTS void atProcessEnd(void (*function)());

/// Calls those functions now, and again when the process ends. For a component on which one of the functions depends
/// and whose libraries are finalised before this one. Call it at the end of the process only.
NK_EXPORT void callEndFunctions();

/// Calls `function` at the very end, also in a child made by fork() if that ends by exit(). There is one such function.
void atLastProcessEnd(void (*function)());

/// Schedules step 1. Called by the default notification center.
void postTerminationAtExit();

/// Called with each notification of the default center before its observers are. Records that the termination
/// notification has been posted.
void noteNotification(const NSString& name) noexcept;

}  // namespace norvik::detail
