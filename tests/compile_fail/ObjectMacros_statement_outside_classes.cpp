#include "NorvikCore/platform/object/NSObject.h"

using namespace norvik;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
};

#ifdef SHOULD_NOT_COMPILE
NK_METHOD(pay)
#else
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(pay)
  void pay() {}
};
#endif
