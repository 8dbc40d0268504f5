// examples/decisions/empty-refs.cpp - docs/decisions/empty-refs.md: an empty Ref takes no calls.
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

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

int main() {
  auto slip = make<Payslip>();  // its employee is an empty Ref

  // slip->employee()->name() would be a call through an empty Ref, which ends the program.
  if (const Ref<Employee> employee = slip->employee()) std::cout << employee->name() << "\n";

  // Reading by name along a path that breaks off gives an absent value.
  const Value name = slip->valueForKeyPath("employee.name");
  std::cout << name << ", absent: " << std::boolalpha << name.isAbsent() << "\n";

  // Setting by name along a broken path sets nothing.
  slip->setValue_forKeyPath("Sian", "employee.name");

  // A look-up gives an absent Value, not an empty Ref.
  const auto rates = NSDictionary::dictionaryWith({{"pension", 5}});
  std::cout << (*rates)["tax"].isAbsent() << "\n";
}
