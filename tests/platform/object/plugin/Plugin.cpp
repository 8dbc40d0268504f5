#define NORVIK_IN_THE_PLUGIN
#include "tests/platform/object/plugin/PluginClasses.h"

namespace {

class OnlyInThePlugin : public StatedTwice {
  NK_OBJECT(OnlyInThePlugin, StatedTwice)
  static int answer() { return 42; }
  NK_CLASS_METHOD(answer)
};

}  // namespace

extern "C" NK_EXPORT const void* statedTwiceInThePlugin() { return &StatedTwice::staticClass(); }
extern "C" NK_EXPORT const void* hiddenInThePlugin() { return &HiddenOnBothSides::staticClass(); }
extern "C" NK_EXPORT const void* olderInThePlugin() { return &OtherVersionOnBothSides::staticClass(); }
