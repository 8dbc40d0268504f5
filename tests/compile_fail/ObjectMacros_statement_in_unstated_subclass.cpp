#include "NorvikCore/platform/object/NSObject.h"

using namespace norvik;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
};

#ifdef SHOULD_NOT_COMPILE
class Manager : public Employee {
  NK_METHOD(pay)
  void pay() {}
};
#else
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(pay)
  void pay() {}
};
#endif
