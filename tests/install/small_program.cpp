// A program that uses something of most parts of the library, for valgrind and for the static library.
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/object/Class.h"

#include <iostream>

using namespace norvik;

int main() {
  // No header of these classes is included. A static library must contain the classes nevertheless.
  for (const char* name :
       {"NSColor", "NSDictionaryController", "NKDecimalFormatter", "DDFileLogger", "FBKVOController"}) {
    if (Class::named(name) == nullptr) {
      std::cout << "no class " << name << "\n";
      return 1;
    }
  }
  int answer = 0;
  auto queue = TSKDispatchQueue::dispatchQueueWithLabel("small");
  queue->dispatchSynchronously([&answer] { answer = 42; });
  DDLogInfo("%d", answer);
  std::cout << answer << " " << nk_utcDateStringWithFormat(nk_dateWithYear(2024, 4, 30), "d MMMM yyyy") << " "
            << nk_currencyStyleString(2000_dec) << "\n";
}
