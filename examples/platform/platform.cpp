// examples/platform/platform.cpp - docs/platform.md: files and their errors, notifications, the console in a test.
#include "NorvikCore/platform/foundation/NSFileHandle.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/values/NSException.h"

#include <iostream>

using namespace norvik;

int main() {
  NSFileManager& files = NSFileManager::defaultManager();
  Ref<NSError> error;

  // A failure is a result and an error that says what failed, on what, and why.
  if (!files.createDirectoryAtPath("/proc/payroll", true, nullptr, &error))
    std::cout << error->localizedDescription() << "\n";

  // A file handle raises instead. A write is complete, or it raises.
  if (!files.createDirectoryAtPath("months", true, nullptr, &error)) return 1;
  if (!files.createFileAtPath("months/april.txt", nullptr, nullptr)) return 1;
  if (const auto file = NSFileHandle::fileHandleForAppendingAtPath("months/april.txt"))
    file->writeData("Sian 2500.00\n");
  try {
    NSFileHandle::fileHandleForReadingAtPath("months/april.txt")->writeData("refused");
  } catch (const NSException& e) {
    std::cout << e.what() << "\n";
  }
  std::cout << files.contentsOfDirectoryAtPath("months")->componentsJoinedByString(", ") << "\n";

  // A notification reaches its observers on the thread that posts it, without a lock.
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const Ref<NSObject> token = center.addObserverForName(
      NSString("MonthWasClosed"), nullptr, [](const NSNotification& note) { std::cout << note.name() << "\n"; });
  center.postNotificationName("MonthWasClosed");
  center.removeObserver(*token);
  center.postNotificationName("MonthWasClosed");  // no observer any more

  // A test reads what was written to the console.
  const kernel::SystemLogCapture console;
  NSLog("no room for %@", "april.txt");
  std::cout << console.lines().front() << "\n";
}
