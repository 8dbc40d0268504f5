// examples/observation/observation.cpp - a window without a screen that follows the name of a pay slip's employee.
#include "NorvikCore/observation/FBKVOController.h"

#include <iostream>

using namespace norvik;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Ref<Employee>, employee, setEmployee)
};

class Window : public NSObject {
  NK_OBJECT(Window, NSObject)
  void show(const Value& name) { std::cout << name << "\n"; }
};

int main() {
  auto slip = make<Payslip>();
  slip->setEmployee(make<Employee>());
  auto window = make<Window>();
  const auto show = [](NSObject& observer, NSObject&, const NSDictionary& change) {
    static_cast<Window&>(observer).show(change[NSKeyValueChangeNewKey]);
  };
  auto controller = FBKVOController::controllerWithObserver(*window);
  controller->observe_keyPath_options_block(slip, keyPath<&Payslip::employee, &Employee::name>(),
                                            NSKeyValueObservingOptionNew, show);
  slip->employee()->setName("Sian");  // the window shows it

  slip->setEmployee(make<Employee>());    // the window shows the empty name of the new employee,
  slip->employee()->setName("Zo\u00EB");  // and follows the new employee from now on
  controller = nullptr;                   // all its observations end
  slip->employee()->setName("Ann");
}
