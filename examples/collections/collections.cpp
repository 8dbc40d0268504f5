// The program of docs/collections.md.
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/object/ObjectMacros.h"
#include "NorvikCore/platform/object/Value_fmt.h"
#include "NorvikCore/platform/values/Decimal_fmt.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <map>
#include <ranges>
#include <string>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Decimal, netPay, setNetPay)
 public:
  Payslip(const NSString& name, const Decimal& netPay) {
    setName(name);
    setNetPay(netPay);
  }
};

int main() {
  const auto slips = NSMutableArray::arrayWithObjects(
      make<Payslip>("Ann", 2150.00_dec), make<Payslip>("Ben", 980.50_dec), make<Payslip>("Cy", 1310.25_dec));

  for (Payslip& slip : slips->as<Payslip>()) slip.setNetPay(slip.netPay() + 10);

  const auto isLarge = [](const Payslip& slip) { return slip.netPay() > 1000; };
  for (const Payslip& slip : slips->as<Payslip>() | std::views::filter(isLarge))
    fmt::print("{:<6}{:>10,.2f}\n", slip.name(), slip.netPay());

  const auto all = slips->as<Payslip>();
  fmt::print("most: {}\n", std::ranges::max_element(all, {}, &Payslip::netPay)->name());

  const auto rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}});
  for (const auto& [band, rate] : rates->as<NSString, Decimal>()) fmt::print("{} {}\n", band, rate);

  std::map<Ref<Payslip>, std::string> notes;
  notes[slips->firstObject().as<Ref<Payslip>>()] = "checked";
  fmt::print("{} note, {} rates: {}\n", notes.size(), rates->size(), *rates);

  try {
    for (const Decimal& amount : slips->as<Decimal>()) fmt::print("{}\n", amount);
  } catch (const NSException& exception) {
    fmt::print("{}\n", exception.name());
  }
}
