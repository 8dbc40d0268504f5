#include "NorvikCore/platform/keyvalue/KeyPath.h"
#include "NorvikCore/platform/object/NSObject.h"

using namespace norvik;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

NSString name() { return keyPath<&Employee::name>(); }

#ifdef SHOULD_NOT_COMPILE
NSString misspelt() { return keyPath<&Employee::nmae>(); }
#endif
