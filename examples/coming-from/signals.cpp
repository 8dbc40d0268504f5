// examples/coming-from/signals.cpp - docs/coming-from-qt-or-boost.md: a property that others follow, and an event.
#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include <iostream>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
};

class Window : public NSObject {
  NK_OBJECT(Window, NSObject)
  void show(const Decimal& pay) { std::cout << pay << "\n"; }
};

int main() {
  auto slip = make<Payslip>();
  auto window = make<Window>();

  // A value that changes: observe it.
  auto controller = FBKVOController::controllerWithObserver(*window);
  controller->observe(slip, keyPath<&Payslip::grossPay>(), &Window::show);
  slip->setGrossPay(2500.00_dec);
  slip->setGrossPay(2500.00_dec);  // an equal value is a change too

  // Something that happens: post a notification.
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const Ref<NSObject> token = center.addObserverForName(
      NSString("MonthWasClosed"), nullptr, [](const NSNotification& note) { std::cout << note.name() << "\n"; });
  center.postNotificationName("MonthWasClosed", slip);
  center.removeObserver(*token);
}
