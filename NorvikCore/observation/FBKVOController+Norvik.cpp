#include "NorvikCore/observation/FBKVOController+Norvik.h"

#include "NorvikCore/platform/object/AnnouncedChange.h"
#include "NorvikCore/platform/object/AssociatedObjects.h"

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

NK_CATEGORY_PROPERTY(FBKVOController, bool, disposed, setDisposed)
NK_CATEGORY_PROPERTY(FBKVOController, bool, requiresDisposal, setRequiresDisposal)

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
