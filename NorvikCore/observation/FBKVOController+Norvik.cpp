#include "NorvikCore/observation/FBKVOController+Norvik.h"

#include "NorvikCore/platform/object/AssociatedObjects.h"
#include "NorvikCore/platform/object/Stated.h"

namespace norvik {
namespace {

constinit const NSString disposedKey = "disposed", requiresDisposalKey = "requiresDisposal";

bool flag(const NSObject& controller, const NSString& key) {
  const Value value = associatedValue(controller, &key);
  return !value.isAbsent() && value.as<bool>();
}

void setFlag(FBKVOController& controller, const NSString& key, bool isSet) {
  detail::changeProperty(controller, key.view(), [&] { setAssociatedValue(controller, &key, isSet); });
}

const detail::CategoryProperty disposedProperty{
    FBKVOController::staticClass(),
    {.name = disposedKey,
     .typeName = "bool",
     .setterName = "setDisposed",
     .isComputed = true,
     .get = [](const NSObject& o) -> Value { return flag(o, disposedKey); },
     .set = [](NSObject& o, const Value& value) { setDisposed(static_cast<FBKVOController&>(o), value.as<bool>()); }}};
const detail::CategoryProperty requiresDisposalProperty{
    FBKVOController::staticClass(),
    {.name = requiresDisposalKey,
     .typeName = "bool",
     .setterName = "setRequiresDisposal",
     .isComputed = true,
     .get = [](const NSObject& o) -> Value { return flag(o, requiresDisposalKey); },
     .set = [](NSObject& o,
               const Value& value) { setRequiresDisposal(static_cast<FBKVOController&>(o), value.as<bool>()); }}};

}  // namespace

void dispose(FBKVOController& controller) {
  if (disposed(controller)) return;
  controller.unobserveAll();
  setDisposed(controller, true);
}

bool disposed(const FBKVOController& controller) { return flag(controller, disposedKey); }

void setDisposed(FBKVOController& controller, bool isDisposed) { setFlag(controller, disposedKey, isDisposed); }

bool requiresDisposal(const FBKVOController& controller) { return flag(controller, requiresDisposalKey); }

void setRequiresDisposal(FBKVOController& controller, bool isRequired) {
  setFlag(controller, requiresDisposalKey, isRequired);
}

}  // namespace norvik
