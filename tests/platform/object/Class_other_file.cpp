// tests/platform/object/Class_other_file.cpp - a class with the same name as one in Class_test.cpp.
#include "NorvikCore/platform/object/NSObject.h"

using namespace norvik;

namespace {

class Local : public NSObject {
  NK_OBJECT(Local, NSObject)
  NK_PROPERTY(int, there, setThere)
};

}  // namespace

const Class& localOfTheOtherFile();
const Class& localOfTheOtherFile() { return Local::staticClass(); }
