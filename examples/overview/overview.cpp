// examples/overview/overview.cpp - docs/README.md: a line for each subject.
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/linq/LINQ.h"
#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include <iostream>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, netPay, setNetPay)
};

int main() {
  std::cout << (2345.55_dec * 0.05_dec).round(2) << "\n";                      // money.md
  std::cout << nk_addMonths(nk_dateWithYear(2024, 1, 31), 1) << "\n";          // dates.md
  std::cout << NSString("Zo\u00EB").rangeOfString("\u00EB").location << "\n";  // text.md

  auto slip = make<Payslip>();                   // runtime.md
  slip->setValue_forKey(2375.00_dec, "netPay");  // by name: setNetPay()
  const Ref<NSArray> slips = NSArray::arrayWithObjects(slip);
  std::cout << Value(slips | linq_select(&Payslip::netPay) | linq_sum()) << "\n";  // queries.md

  std::cout << *MRKTaggedString::stringWithString("Pay <b>now</b>")->string() << "\n";  // markup.md
}
