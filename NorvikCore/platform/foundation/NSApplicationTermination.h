// NorvikCore/platform/foundation/NSApplicationTermination.h - the last thing that everybody is told.
//
//   NSNotificationCenter::defaultCenter().addObserverForName(NSApplicationWillTerminateNotification, nullptr,
//       [](const NSNotification&) { saveOpenPayRun(); });
//
// When the process ends (main() returns, exit() is called) this notification has been posted to the default center
// once: by the application, or else by the platform, on the thread that ends the process. An observer's NSException is
// then reported on the system console, and the observers after it are not called.
//
// The platform posts it among the functions given to atexit(), at the place where defaultCenter() was first called:
// what was static before that is still there. Nothing is posted by _exit(), quick_exit(), abort() or a deadly signal,
// nor when a child made by fork() ends, whose threads and queues are gone; a child that becomes the program proper (a
// service that goes to the background) first uses the notification center after its fork(), or posts by itself.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const NSString NSApplicationWillTerminateNotification;

}  // namespace norvik
