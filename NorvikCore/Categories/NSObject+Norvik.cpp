#include "NorvikCore/Categories/NSObject+Norvik.h"

#include "NorvikCore/platform/appkit/NSApplication.h"
#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/Format.h"

#include <algorithm>
#include <vector>

namespace norvik {
namespace {

/// The class directly below the root class from which all closures derive, found from an empty closure.
const Class& closureClass() {
  return kernel::madeOnce([] {
    const Class* c = &Block<void()>([] {}).object()->classObject();
    while (c->superclass() && *c->superclass() != NSObject::staticClass()) c = c->superclass();
    return c;
  });
}

Value valueOf(const NSObject& object) { return Ref<NSObject>(const_cast<NSObject*>(&object)); }

Ref<NSObject> delegateOf(NSObject& object) {
  const Class& c = object.classObject();
  if (!c.property("delegate") && !c.instanceMethod("delegate")) return nullptr;
  return Ref<NSObject>(object.valueForKey("delegate").object());
}

}  // namespace

bool nk_isBlock(const NSObject& receiver) { return receiver.isKindOfClass(closureClass()); }

bool nk_isBlock(const Value& receiver) { return receiver.object() && nk_isBlock(*receiver.object()); }

Value nk_performNonLeakySelector(NSObject& receiver, SEL selector) { return receiver.performSelector(selector); }

Value nk_performNonLeakySelector(NSObject& receiver, SEL selector, const Value& object) {
  return receiver.performSelector(selector, object);
}

bool nk_tryToPerformDelegateAction(NSObject& receiver, SEL action, const Value& argument) {
  std::vector<Ref<NSObject>> asked;
  for (Ref<NSObject> next = ref(receiver); next; next = delegateOf(*next)) {
    if (next->respondsToSelector(action)) {
      return NSApplication::sharedApplication().sendAction_to_from(action, next, argument);
    }
    if (std::ranges::find(asked, next) != asked.end()) return false;
    asked.push_back(next);
  }
  return false;
}

Value nk_valueForKeyPath(const NSObject& receiver, const NSString& keyPath, const NKTransformBlock& block) {
  Value value = receiver.valueForKeyPath(keyPath);
  return block ? block(value) : value;
}

Ref<NSObject> nk_as(NSObject& receiver, const Class& wanted) {
  return receiver.isKindOfClass(wanted) ? ref(receiver) : nullptr;
}

Value nk_as(const Value& receiver, const Class& wanted) {
  return !receiver.isAbsent() && receiver.classObject().isSubclassOf(wanted) ? receiver : Value();
}

NSString nk_objAddress(const NSObject& receiver) { return stringWithFormat("%p", static_cast<const void*>(&receiver)); }

Ref<NSData> nk_archivedData(const NSObject& receiver) { return nk_archivedData(valueOf(receiver)); }

Ref<NSData> nk_archivedData(const Value& receiver) { return NSArchiver::archivedDataWithRootObject(receiver); }

Value nk_cloneCodingObject(const Value& receiver) {
  const auto data = NSKeyedArchiver::archivedDataWithRootObject(receiver);
  return NSKeyedUnarchiver::unarchiveObjectWithData(*data);
}

}  // namespace norvik
