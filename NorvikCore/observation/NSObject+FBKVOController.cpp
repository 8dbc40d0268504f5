#include "NorvikCore/observation/NSObject+FBKVOController.h"

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/AssociatedObjects.h"

namespace norvik {
namespace {

/// Their addresses are the keys of the associations.
const char NSObjectKVOControllerKey = 0, NSObjectKVOControllerNonRetainingKey = 0;

Ref<FBKVOController> associated(const NSObject& observer, const char& key) {
  return associatedValue(observer, &key).as<Ref<FBKVOController>>();
}

Ref<FBKVOController> associatedOrMade(NSObject& observer, const char& key, bool retainObserved) {
  if (Ref<FBKVOController> present = associated(observer, key)) return present;
  static constinit Mutex mutex;
  MutexLock lock(mutex);
  if (Ref<FBKVOController> present = associated(observer, key)) return present;
  const Ref<FBKVOController> made = FBKVOController::initWithObserver(observer, retainObserved);
  setAssociatedValue(observer, &key, made);
  return made;
}

}  // namespace

Ref<FBKVOController> KVOController(NSObject& observer) {
  return associatedOrMade(observer, NSObjectKVOControllerKey, true);
}

void setKVOController(NSObject& observer, const Ref<FBKVOController>& controller) {
  setAssociatedValue(observer, &NSObjectKVOControllerKey, controller);
}

Ref<FBKVOController> KVOControllerNonRetaining(NSObject& observer) {
  return associatedOrMade(observer, NSObjectKVOControllerNonRetainingKey, false);
}

void setKVOControllerNonRetaining(NSObject& observer, const Ref<FBKVOController>& controller) {
  setAssociatedValue(observer, &NSObjectKVOControllerNonRetainingKey, controller);
}

}  // namespace norvik
