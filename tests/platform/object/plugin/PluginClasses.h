// tests/platform/object/plugin/PluginClasses.h - a class whose header both a program and a shared object include.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

class NK_EXPORT StatedTwice : public norvik::NSObject {
  NK_OBJECT(StatedTwice, NSObject)
  NK_PROPERTY(int, number, setNumber)
};

/// Not exported: each side has a type of its own for it, of one name.
class HiddenOnBothSides : public norvik::NSObject {
  NK_OBJECT(HiddenOnBothSides, NSObject)
};
