#include "NorvikCore/observation/internal/_FBKVOSharedController.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/keyvalue/internal/ChangeDelivery.h"
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
  if (info->_state() == _FBKVOInfo::Ended) return;
  info->isObserving_.storeRelaxed(true);
  // An observation that another thread or a handler has ended in the meantime is not attached.
  const _FBKVOInfo& made = *info;
  Ref<detail::Registration> registration = std::move(info);
  if (detail::attachPlain(object, registration)) return;
  const Ref<FBKVOController> controller = ref(*made._controller);  // the initial call may release it
  try {
    detail::observe(object, registration);
  } catch (...) {
    controller->unobserve(object, registration->keyPath());
    throw;
  }
}

Ref<detail::Registration> _FBKVOSharedController::unobserve(NSObject& object, _FBKVOInfo& info) {
  return detail::endRegistration(&object, info);
}

void _FBKVOSharedController::unobserve(NSObject* object, std::span<_FBKVOInfo* const> infos) {
  for (_FBKVOInfo* info : infos) detail::endRegistration(object, *info);
}

void _FBKVOSharedController::list(FBKVOController& controller) {
  detail::WordLock lock(_mutex);
  controller.next_ = std::exchange(latest_, &controller);
  if (controller.next_) controller.next_->previous_ = &controller;
}

void _FBKVOSharedController::unlist(FBKVOController& controller) noexcept {
  detail::WordLock lock(_mutex);
  (controller.previous_ ? controller.previous_->next_ : latest_) = controller.next_;
  if (controller.next_) controller.next_->previous_ = controller.previous_;
}

std::vector<Ref<_FBKVOInfo>> _FBKVOSharedController::_infos() const {
  std::vector<Ref<_FBKVOInfo>> infos;
  // A listed controller and its observations exist, because a controller that is being destroyed waits for this mutex.
  // It cannot be retained: the thread that destroys it does not look for new counts any more.
  detail::WordLock lock(_mutex);
  for (const FBKVOController* each = latest_; each; each = each->next_) each->addInfosTo(infos);
  return infos;
}

void _FBKVOSharedController::observeValueForKeyPath(const NSString& keyPath, NSObject& object,
                                                    const KeyValueChange& change, void* context) {
  for (const Ref<_FBKVOInfo>& info : _infos()) {
    if (info.get() != context || info->_keyPath() != keyPath) continue;
    detail::ChangeDelivery delivery(object);
    delivery.setChange(change.oldValue(), change.newValue(), change.isPrior());
    info->deliver(delivery, object);
  }
}

NSString _FBKVOSharedController::debugDescription() const {
  std::vector<Value> texts;
  for (const Ref<_FBKVOInfo>& info : _infos()) texts.push_back(info->debugDescription());
  return stringWithFormat("<%@:%p contexts:%@>", classObject().name(), static_cast<const void*>(this),
                          make<NSArray>(std::move(texts)));
}

}  // namespace norvik
