#include "NorvikCore/observation/internal/_FBKVOSharedController.h"

#include "NorvikCore/observation/internal/ChangeDictionary.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
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
    _infos[info.get()];
    info->isListed_ = true;
    info->object_ = &object;
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
    for (const Ref<_FBKVOInfo>& info : infos) {
      _infos.take(info.get());
      info->isListed_ = false;
    }
  }
  for (const Ref<_FBKVOInfo>& info : infos) detail::endRegistration(object, *info);
}

void _FBKVOSharedController::forget(const _FBKVOInfo& info) {
  detail::WordLock lock(_mutex);
  _infos.take(&info);
  const_cast<_FBKVOInfo&>(info).isListed_ = false;
}

Ref<FBKVOController> _FBKVOSharedController::controller(const _FBKVOInfo& info) const {
  detail::WordLock lock(_mutex);
  if (!info.isListed_ || !detail::ObjectAccess::retainUnlessGoing(*info._controller)) return nullptr;
  return Ref<FBKVOController>::adopt(info._controller);
}

/// The observation of the context and its controller. Empty if one of them was destroyed or has ended, or if another
/// observation now has that address.
_FBKVOSharedController::Meant _FBKVOSharedController::find(const void* context, const NSObject& object,
                                                           const NSString& keyPath) const {
  Meant meant;
  detail::WordLock lock(_mutex);
  if (!_infos.find(context)) return meant;
  // A listed info exists, because an info being destroyed and a controller ending its observations wait for this mutex.
  auto& info = *static_cast<_FBKVOInfo*>(const_cast<void*>(context));
  const bool isMeant = info.object_ == &object && info._state() != _FBKVOInfo::Ended &&
                       (info._keyPath().isIdenticalTo(keyPath) || info._keyPath() == keyPath);
  if (!isMeant || !detail::ObjectAccess::retainUnlessGoing(*info._controller)) return meant;
  meant.controller = Ref<FBKVOController>::adopt(info._controller);
  if (detail::ObjectAccess::retainUnlessGoing(info)) meant.info = Ref<_FBKVOInfo>::adopt(&info);
  return meant;
}

void _FBKVOSharedController::observeValueForKeyPath(const NSString& keyPath, NSObject& object,
                                                    const KeyValueChange& change, void* context) {
  const auto [meant, controller] = find(context, object, keyPath);
  if (!meant || !controller) return;
  const Ref<NSObject> observer = controller->observer();
  if (!observer) return;
  if (meant->_changeBlock) {
    meant->_changeBlock(*observer, object, change, keyPath);
  } else if (meant->_block) {
    const detail::ChangeDictionary dictionary(keyPath, change);
    meant->_block(*observer, object, *dictionary);
  } else if (meant->_action) {
    observer->performSelector(meant->_action, change.dictionary(), ref(object));
  } else {
    observer->observeValueForKeyPath(keyPath, object, change, meant->_context);
  }
}

NSString _FBKVOSharedController::debugDescription() const {
  std::vector<Ref<_FBKVOInfo>> infos;
  {
    detail::WordLock lock(_mutex);
    _infos.forEach([&](const void* address, Listed) {
      auto* info = static_cast<_FBKVOInfo*>(const_cast<void*>(address));
      if (detail::ObjectAccess::retainUnlessGoing(*info)) infos.push_back(Ref<_FBKVOInfo>::adopt(info));
    });
  }
  std::vector<Value> texts;
  texts.reserve(infos.size());
  for (const Ref<_FBKVOInfo>& info : infos) texts.push_back(info->debugDescription());
  return stringWithFormat("<%@:%p contexts:%@>", classObject().name(), static_cast<const void*>(this),
                          make<NSArray>(std::move(texts)));
}

}  // namespace norvik
