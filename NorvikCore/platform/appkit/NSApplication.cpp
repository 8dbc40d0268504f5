#include "NorvikCore/platform/appkit/NSApplication.h"

namespace norvik {

NSApplication::~NSApplication() = default;

NSApplication& NSApplication::sharedApplication() {
  static NSApplication& shared = *make<NSApplication>().take();
  return shared;
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
