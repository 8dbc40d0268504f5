// The program of docs/performance.md: pairs of forms that give the same, of which the second is the faster one.
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/formatters/NKUtcDateFormatter.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSMutableString.h"

#include <iostream>
#include <string>

using namespace norvik;
using namespace norvik::literals;

int main() {
  // A formatter that is kept writes a date in tens of nanoseconds. The function with a pattern looks its formatter up,
  // and off the main thread it makes one for each call.
  const Date payday = "2024-05-31"_date;
  std::cout << nk_utcDateStringWithFormat(payday, "dd/MM/yyyy") << "\n";
  const auto days = make<NKUtcDateFormatter>();
  days->setDateFormat("dd/MM/yyyy");
  std::cout << days->stringFromDate(payday) << "\n";

  // An index into text that is not ASCII passes up to 16 units. A loop over the units passes each once.
  const NSString name = "Si\u00E2n Gwena\u00EBl";
  int byIndex = 0, byLoop = 0;
  for (NSUInteger i = 0; i < name.length(); ++i) byIndex += name.characterAtIndex(i) > 0x7F ? 1 : 0;
  for (const char16_t unit : name.units()) byLoop += unit > 0x7F ? 1 : 0;
  std::cout << byIndex << " " << byLoop << "\n";

  // removeObjectsInArray compares each element with each. A set finds an element in constant time.
  const auto numbers = NSMutableArray::arrayWithObjects(1, 2, 3, 4, 5);
  const auto left = NSSet::setWithObjects(2, 4);
  const auto stay = NSMutableArray::array();
  for (const Value& each : *numbers)
    if (!left->containsObject(each)) stay->addObject(each);
  numbers->removeObjectsInArray(*NSArray::arrayWithObjects(2, 4));
  std::cout << numbers->isEqual(*stay) << "\n";

  // A text that grows: += copies what is there so far; NSMutableString appends in place.
  NSMutableString line;
  for (int month = 1; month <= 12; ++month) line.appendString(stringWithFormat("%d,", month));
  std::cout << line.string() << "\n";
}
