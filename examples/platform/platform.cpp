// examples/platform/platform.cpp - docs/platform.md: files and their errors, notifications, a clock that a test moves.
#include "NorvikCore/platform/foundation/NSFileHandle.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/kernel/Clock.h"
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

  // Code that must be right across a jump of the clock takes a ClockSource; its test moves one.
  kernel::ManualClock clock(0, 0);
  const std::int64_t before = clock.monotonicNanoseconds();
  clock.advance(90'000'000'000);
  std::cout << (clock.monotonicNanoseconds() - before) / 1'000'000'000 << " s\n";
}
