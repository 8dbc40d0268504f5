// tests/platform/object/plugin/PluginClasses.h - a class whose header both a program and a shared object include.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

class NK_EXPORT StatedTwice : public norvik::NSObject {
  NK_OBJECT(StatedTwice, NSObject)
  NK_PROPERTY(int, number, setNumber)
};

/// Not exported, so program and shared object each have a type of their own for it, with the same name.
class HiddenOnBothSides : public norvik::NSObject {
  NK_OBJECT(HiddenOnBothSides, NSObject)
};

/// A different version in the shared object. Not exported, because otherwise the linker would confuse the two.
class OtherVersionOnBothSides : public norvik::NSObject {
  NK_OBJECT(OtherVersionOnBothSides, NSObject)
#ifdef NORVIK_IN_THE_PLUGIN
  NK_PROPERTY(int, older, setOlder)
#else
  NK_PROPERTY(double, newer, setNewer)
#endif
};
