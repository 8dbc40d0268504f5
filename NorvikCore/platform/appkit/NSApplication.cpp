#include "NorvikCore/platform/appkit/NSApplication.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"

namespace norvik {

NSApplication::~NSApplication() = default;

NSApplication& NSApplication::sharedApplication() {
  return kernel::madeOnce([] { return make<NSApplication>().take(); });
}

bool NSApplication::sendAction_to_from(SEL action, const Ref<NSObject>& target, const Value& sender) {
  Ref<NSObject> receiver = target;
  if (!receiver) receiver = respondsToSelector(action) ? ref(static_cast<NSObject&>(*this)) : delegate();
  if (!receiver || !receiver->respondsToSelector(action)) return false;
  if (action.argumentCount() == 0) {
    receiver->performSelector(action);
  } else {
    receiver->performSelector(action, sender);
  }
  return true;
}

}  // namespace norvik
