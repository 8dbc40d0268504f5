// examples/tutorial/step3.cpp - docs/tutorial.md: an object that is observed.
#include "Payslip.h"

#include "NorvikCore/observation/FBKVOController.h"

#include <iostream>

using namespace payroll;

class Screen : public NSObject {
  NK_OBJECT(Screen, NSObject)
  void show(const NSString& name, const Decimal& netPay) { std::cout << name << " gets " << netPay << "\n"; }
};

int main() {
  auto sian = payslip("Sian", "Works", 2500.00_dec);
  auto screen = make<Screen>();

  auto controller = FBKVOController::controllerWithObserver(*screen);
  controller->observe(sian, keyPath<&Payslip::netPay>(), NSKeyValueObservingOptionInitial,
                      [](Screen& self, Payslip& slip, const Decimal& netPay) { self.show(slip.name(), netPay); });

  sian->setGrossPay(2600.00_dec);  // the net pay depends on it
  sian->setPensionRate(8);         // and, through the pension, on this
  sian->setName("Siân");           // the net pay does not depend on the name
  controller = nullptr;            // the screen is not notified any more
  sian->setGrossPay(0);
}
