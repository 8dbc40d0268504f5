// examples/observation/observation.cpp - a window without a screen that follows the name of a payslip's employee.
#include "NorvikCore/observation/FBKVOController.h"

#include <iostream>
#include <optional>

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
  void show(const NSString& name) { std::cout << name << "\n"; }
};

int main() {
  auto slip = make<Payslip>();
  slip->setEmployee(make<Employee>());
  auto window = make<Window>();
  auto controller = FBKVOController::controllerWithObserver(*window);
  controller->observe(slip, keyPath<&Payslip::employee, &Employee::name>(),
                      [](Window& observer, const std::optional<NSString>& name) { observer.show(name.value_or("-")); });
  slip->employee()->setName("Sian");  // the window shows it

  slip->setEmployee(make<Employee>());    // the window shows the empty name of the new employee,
  slip->employee()->setName("Zo\u00EB");  // and follows the new employee from now on
  controller = nullptr;                   // all its observations end
  slip->employee()->setName("Ann");
}
