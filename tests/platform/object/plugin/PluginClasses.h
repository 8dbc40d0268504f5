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

/// Of another version in the shared object: not exported, or the two would be mixed up by the linker.
class OtherVersionOnBothSides : public norvik::NSObject {
  NK_OBJECT(OtherVersionOnBothSides, NSObject)
#ifdef NORVIK_IN_THE_PLUGIN
  NK_PROPERTY(int, older, setOlder)
#else
  NK_PROPERTY(double, newer, setNewer)
#endif
};
