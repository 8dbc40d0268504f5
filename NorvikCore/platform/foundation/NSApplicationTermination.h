// NorvikCore/platform/foundation/NSApplicationTermination.h - the notification that is posted when the process ends.
//
//   NSNotificationCenter::defaultCenter().addObserverForName(NSApplicationWillTerminateNotification, nullptr,
//       [](const NSNotification&) { saveOpenPayRun(); });
//
// When the process ends (main() returns or exit() is called), this notification is posted to the default center once.
// The application may post it; if it did not, the platform posts it on the thread that ends the process. If an observer
// raises an NSException then, the exception is reported on the system console and the observers after it are not
// called.
//
// The platform posts it in a function that it registers with atexit() when defaultCenter() is first called. Static
// objects that were constructed before that call therefore still exist. Nothing is posted if the process ends by
// _exit(), quick_exit(), abort() or a deadly signal, or if it is a child made by fork(), because the threads and queues
// of the parent do not exist there. If a child continues as the actual program (a service that moves to the
// background), it must either first use the notification center after its fork() or post the notification itself.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

NK_EXPORT extern const NSString NSApplicationWillTerminateNotification;

}  // namespace norvik
