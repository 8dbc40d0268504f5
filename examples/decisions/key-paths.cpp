// examples/decisions/key-paths.cpp - docs/decisions/key-paths.md: how far a key path is observed.
#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include <iostream>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(int, hours, setHours)
};

class Month : public NSObject {
  NK_OBJECT(Month, NSObject)
  NK_PROPERTY(Ref<NSArray>, slips, setSlips)
  void announce() {
    willChangeValueForKey("slips");
    didChangeValueForKey("slips");
  }
};

int main() {
  auto sian = make<Payslip>(), ann = make<Payslip>();
  auto month = make<Month>();
  month->setSlips(NSArray::arrayWithObjects(sian, ann));

  auto controller = FBKVOController::controllerWithObserver(*month);
  controller->observe_keyPath_options_block(
      month, "slips.@sum.hours", NSKeyValueObservingOptionNew,
      [](NSObject&, NSObject&, const NSDictionary& change) { std::cout << change[NSKeyValueChangeNewKey] << "\n"; });

  sian->setHours(38);                                // inside the array: not notified
  month->setSlips(NSArray::arrayWithObjects(sian));  // the array is replaced: notified
  sian->setHours(40);
  month->announce();  // the owner says that the contents changed: notified

  const auto rates = NSDictionary::dictionaryWith({{"tax.code", "1257L"}});
  std::cout << rates->valueForKey("tax.code") << "\n";      // a key
  std::cout << rates->valueForKeyPath("tax.code") << "\n";  // a path: the key "code" of the value of the key "tax"
}
