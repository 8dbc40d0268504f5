#include "NorvikCore/platform/keyvalue/KeyPath.h"
#include "NorvikCore/platform/object/NSObject.h"

using namespace norvik;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Ref<Employee>, employee, setEmployee)
  NK_PROPERTY(Ref<Payslip>, previous, setPrevious)
};

NSString name() { return keyPath<&Payslip::employee, &Employee::name>(); }

#ifdef SHOULD_NOT_COMPILE
NSString wrong() { return keyPath<&Payslip::previous, &Employee::name>(); }
#endif
