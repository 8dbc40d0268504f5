#include "NorvikCore/observation/internal/_FBKVOSharedController.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/keyvalue/internal/Delivery.h"
#include "NorvikCore/platform/keyvalue/internal/ObserverList.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/values/Format.h"

#include <utility>
#include <vector>

namespace norvik {

_FBKVOSharedController& _FBKVOSharedController::sharedController() {
  return kernel::madeOnce([] {
    auto* made = make<_FBKVOSharedController>().take();
    detail::ObjectAccess::setPermanent(*made);
    return made;
  });
}

void _FBKVOSharedController::observe(NSObject& object, Ref<_FBKVOInfo> info) {
  {
    detail::WordLock lock(_mutex);
    if (info->_state() == _FBKVOInfo::Ended) return;
    list(*info);
  }
  // An observation that another thread or a handler has ended in the meantime is not attached.
  Ref<detail::Registration> registration = std::move(info);
  if (detail::attachPlain(object, registration)) return;
  try {
    detail::observe(object, registration);
  } catch (...) {
    const auto& failed = static_cast<const _FBKVOInfo&>(*registration);
    if (const Ref<FBKVOController> present = controller(failed)) present->unobserve(object, failed.keyPath());
    throw;
  }
}

void _FBKVOSharedController::unobserve(NSObject& object, _FBKVOInfo& info) {
  forget(info);
  detail::endRegistration(&object, info);
}

void _FBKVOSharedController::unobserve(NSObject* object, std::span<const Ref<_FBKVOInfo>> infos) {
  {
    detail::WordLock lock(_mutex);
    for (const Ref<_FBKVOInfo>& info : infos) unlist(*info);
  }
  for (const Ref<_FBKVOInfo>& info : infos) detail::endRegistration(object, *info);
}

void _FBKVOSharedController::forget(_FBKVOInfo& info) {
  detail::WordLock lock(_mutex);
  unlist(info);
}

void _FBKVOSharedController::list(_FBKVOInfo& info) {
  if (std::exchange(info.isListed_, true)) return;
  info.next_ = std::exchange(_infos, &info);
  if (info.next_) info.next_->previous_ = &info;
}

void _FBKVOSharedController::unlist(_FBKVOInfo& info) {
  if (!std::exchange(info.isListed_, false)) return;
  (info.previous_ ? info.previous_->next_ : _infos) = info.next_;
  if (info.next_) info.next_->previous_ = info.previous_;
  info.previous_ = info.next_ = nullptr;
}

Ref<FBKVOController> _FBKVOSharedController::controller(const _FBKVOInfo& info) const {
  detail::WordLock lock(_mutex);
  if (!info.isListed_ || !detail::ObjectAccess::retainUnlessGoing(*info._controller)) return nullptr;
  return Ref<FBKVOController>::adopt(info._controller);
}

/// The observation of the context; empty if it was destroyed or has ended, or if another observation now has that
/// address. Linear in all observations.
Ref<_FBKVOInfo> _FBKVOSharedController::find(const void* context, const NSString& keyPath) const {
  detail::WordLock lock(_mutex);
  _FBKVOInfo* info = _infos;
  while (info && info != context) info = info->next_;
  // A listed observation exists, because one that is being destroyed waits for this mutex.
  const bool isMeant = info && info->_state() != _FBKVOInfo::Ended && info->_keyPath() == keyPath &&
                       detail::ObjectAccess::retainUnlessGoing(*info);
  return isMeant ? Ref<_FBKVOInfo>::adopt(info) : nullptr;
}

void _FBKVOSharedController::observeValueForKeyPath(const NSString& keyPath, NSObject& object,
                                                    const KeyValueChange& change, void* context) {
  const Ref<_FBKVOInfo> info = find(context, keyPath);
  if (!info) return;
  detail::Delivery delivery(object);
  delivery.setChange(change.oldValue(), change.newValue(), change.isPrior());
  info->deliver(delivery, object);
}

NSString _FBKVOSharedController::debugDescription() const {
  std::vector<Ref<_FBKVOInfo>> infos;
  {
    detail::WordLock lock(_mutex);
    for (_FBKVOInfo* info = _infos; info; info = info->next_) {
      if (detail::ObjectAccess::retainUnlessGoing(*info)) infos.push_back(Ref<_FBKVOInfo>::adopt(info));
    }
  }
  std::vector<Value> texts;
  texts.reserve(infos.size());
  for (const Ref<_FBKVOInfo>& info : infos) texts.push_back(info->debugDescription());
  return stringWithFormat("<%@:%p contexts:%@>", classObject().name(), static_cast<const void*>(this),
                          make<NSArray>(std::move(texts)));
}

}  // namespace norvik
