// examples/decisions/descriptions.cpp - docs/decisions/descriptions.md: a description is for logs; a text is for
// people.
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/values/Date_literals.h"

#include <iostream>

using namespace norvik;
using namespace norvik::literals;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NSString description() const override { return "payslip of " + name(); }
};

int main() {
  const Value amount(1234.5_dec), flag(true), name("Sian"), absent;
  std::cout << amount << " " << flag << " " << absent << " " << Value::null() << "\n";
  std::cout << "2024-07-01"_date
            << "\n";
  std::cout << NSArray::arrayWithObjects("Sian", 5, Value::null()) << "\n";
  auto slip = make<Payslip>();
  slip->setName("Sian");
  std::cout << slip << "\n";

  // For people.
  std::cout << nk_currencyStyleString(amount.as<Decimal>()) << "\n";
  std::cout << nk_utcDateStringWithFormat("2024-07-01"_date, "d MMMM yyyy") << "\n";
  std::cout << NSArray::arrayWithObjects("Sian", "Ann")->componentsJoinedByString(", ") << "\n";
  if (const NSString* text = name.string()) std::cout << *text << "\n";  // only if it is a text
}
