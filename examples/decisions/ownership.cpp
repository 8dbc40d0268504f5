// examples/decisions/ownership.cpp - docs/decisions/ownership.md: a binding retains neither side, and an observation
// does not retain its observer.
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include <iostream>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(int, hours, setHours)
};

class Field : public NSObject {
  NK_OBJECT(Field, NSObject)
  NK_PROPERTY(Value, value, setValue)
};

int main() {
  auto field = make<Field>();
  {
    auto payslip = make<Payslip>();
    payslip->setHours(38);
    nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *payslip, "hours", nullptr);
  }  // the last Ref to the payslip: it is destroyed, and the binding with it
  std::cout << field->value() << ", bound: " << std::boolalpha << nk_updateBoundValue(*field, 40) << "\n";

  auto payslip = make<Payslip>();  // this Ref lives as long as the binding is needed
  nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *payslip, "hours", nullptr);
  std::cout << nk_updateBoundValue(*field, 40) << " " << payslip->hours() << "\n";
}
