// A shared object that exports nothing of C++, so the loader would unload it.
#include "NorvikCore/platform/object/NSObject.h"

namespace {

using namespace norvik;

class OnlyInTheHidingPlugin : public NSObject {
  NK_OBJECT(OnlyInTheHidingPlugin, NSObject)
  static int answer() { return 43; }
  NK_CLASS_METHOD(answer)
};

}  // namespace
