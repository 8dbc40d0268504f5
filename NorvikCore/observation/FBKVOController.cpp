#include "NorvikCore/observation/FBKVOController.h"

#include "NorvikCore/observation/internal/ObservedObjects.h"
#include "NorvikCore/observation/internal/_FBKVOSharedController.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <utility>
#include <vector>

namespace norvik {

constinit const NSString FBKVONotificationKeyPathKey = "FBKVONotificationKeyPathKey";

namespace {

using ObservedEntry = detail::ObservedObjects::Map::Entry;
using ObservedEntries = std::vector<ObservedEntry>;

_FBKVOSharedController& shared() { return _FBKVOSharedController::sharedController(); }

/// Ends the observations of one object. If the object was destroyed, its registrations were destroyed with it.
void unobserveEntry(const ObservedEntry& entry) {
  if (entry.payload.infos().empty()) return;
  const Ref<NSObject> object = entry.object();
  shared().unobserve(object.get(), entry.payload.infos());
}

}  // namespace

FBKVOController::FBKVOController(NSObject& observer, bool retainObserved)
    : _objectInfosMap(new detail::ObservedObjects(retainObserved)), _observer(&observer) {
  _objectInfosMap->setReceiver(detail::Registration::recordOf(_observer));
  shared().list(*this);
}

FBKVOController::~FBKVOController() {
  _unobserveAll();
  shared().unlist(*this);
}

Ref<FBKVOController> FBKVOController::controllerWithObserver(NSObject& observer) { return initWithObserver(observer); }

Ref<FBKVOController> FBKVOController::initWithObserver(NSObject& observer) { return initWithObserver(observer, true); }

Ref<FBKVOController> FBKVOController::initWithObserver(NSObject& observer, bool retainObserved) {
  return make<FBKVOController>(observer, retainObserved);
}

void FBKVOController::observe_keyPath_options_block(detail::ObjectArgument object, const NSString& keyPath,
                                                    NSKeyValueObservingOptions options, FBKVONotificationBlock block) {
  if (!object || keyPath.empty() || !block) return;
  _observe(*object, make<_FBKVOInfo>(*this, keyPath, options, std::move(block), SEL(), nullptr));
}

void FBKVOController::observe_keyPath_options_action(detail::ObjectArgument object, const NSString& keyPath,
                                                     NSKeyValueObservingOptions options, SEL action) {
  if (!object || keyPath.empty() || !action) return;
  _observe(*object, make<_FBKVOInfo>(*this, keyPath, options, nullptr, action, nullptr));
}

void FBKVOController::observe_keyPath_options_context(detail::ObjectArgument object, const NSString& keyPath,
                                                      NSKeyValueObservingOptions options, void* context) {
  if (!object || keyPath.empty()) return;
  _observe(*object, make<_FBKVOInfo>(*this, keyPath, options, nullptr, SEL(), context));
}

void FBKVOController::observe_keyPaths_options_block(detail::ObjectArgument object, const NSArray& keyPaths,
                                                     NSKeyValueObservingOptions options,
                                                     const FBKVONotificationBlock& block) {
  for (const Value& path : keyPaths) observe_keyPath_options_block(object, path.as<NSString>(), options, block);
}

void FBKVOController::observe_keyPaths_options_action(detail::ObjectArgument object, const NSArray& keyPaths,
                                                      NSKeyValueObservingOptions options, SEL action) {
  for (const Value& path : keyPaths) observe_keyPath_options_action(object, path.as<NSString>(), options, action);
}

void FBKVOController::observe_keyPaths_options_context(detail::ObjectArgument object, const NSArray& keyPaths,
                                                       NSKeyValueObservingOptions options, void* context) {
  for (const Value& path : keyPaths) observe_keyPath_options_context(object, path.as<NSString>(), options, context);
}

void FBKVOController::observeBlock(detail::ObjectArgument object, const NSString& keyPath,
                                   NSKeyValueObservingOptions options, detail::ObservingBlock block) {
  if (!object || keyPath.empty() || !block.block) return;
  const auto refuse = [&](const NSString& reason) {
    NSException::raise(NSInvalidArgumentException, stringWithFormat("observing \"%@\": %@", keyPath, reason));
  };
  if ((options & NSKeyValueObservingOptionPrior) != 0) {
    refuse("a closure cannot tell a prior call from the others: use observe_keyPath_options_block");
  }
  if (block.needsOldValue && (options & NSKeyValueObservingOptionInitial) != 0) {
    refuse("the initial call has no old value: the closure takes the old value as a std::optional");
  }
  const Ref<NSObject> present = block.observer.accepts ? observer() : nullptr;
  if (present && !block.observer.accepts(*present)) {
    refuse(stringWithFormat("the closure takes an observer of class %@, and the controller's is of class %@",
                            block.observer.wanted().name(), present->classObject().name()));
  }
  _observe(*object, make<_FBKVOInfo>(*this, keyPath, options | block.options, std::move(block.block)));
}

void detail::raiseObservedValue(const NSString& keyPath, const char* which) {
  NSString reason;
  try {
    throw;
  } catch (const NSException& problem) {
    reason = problem.reason();
  }
  NSException::raise(NSInvalidArgumentException,
                     stringWithFormat("observing \"%@\": the %s value %@", keyPath, which, reason));
}

void FBKVOController::unobserve(detail::ObjectArgument object, const NSString& keyPath) {
  if (object) _unobserve(*object, keyPath);
}

void FBKVOController::unobserve(detail::ObjectArgument object) {
  if (object) _unobserve(*object);
}

void FBKVOController::unobserveAll() { _unobserveAll(); }

void FBKVOController::_observe(NSObject& object, Ref<_FBKVOInfo> info) {
  ObservedEntries left;  // destroyed after the lock is released
  {
    const detail::ObservedObjects::Locked objects(*_objectInfosMap);
    if (!objects->findOrInsert(object, left).add(*info)) return;
  }
  for (const auto& entry : left) unobserveEntry(entry);
  // The initial call may release the object and this controller.
  const Ref<NSObject> kept = info->wants(NSKeyValueObservingOptionInitial) ? ref(object) : nullptr;
  shared().observe(object, std::move(info));
}

void FBKVOController::_unobserve(NSObject& object, const NSString& keyPath) {
  Ref<_FBKVOInfo> info;
  ObservedEntry emptied;
  {
    const detail::ObservedObjects::Locked objects(*_objectInfosMap);
    emptied = objects->takeIf(object, [&](detail::InfoSet& infos) {
      info = infos.take(keyPath);
      return infos.infos().empty();
    });
  }
  if (!info) return;
  if (Ref<detail::Registration> listed = shared().unobserve(object, *info)) {
    static_cast<void>(info.take());
    detail::ObjectAccess::releaseTwice(*listed.take());
  }
}

void FBKVOController::_unobserve(NSObject& object) {
  ObservedEntry taken;
  {
    const detail::ObservedObjects::Locked objects(*_objectInfosMap);
    taken = objects->takeIf(object, [](const detail::InfoSet&) { return true; });
  }
  unobserveEntry(taken);
}

void FBKVOController::_unobserveAll() {
  ObservedEntries all;
  {
    const detail::ObservedObjects::Locked objects(*_objectInfosMap);
    all = objects->takeAll();
  }
  for (const auto& entry : all) unobserveEntry(entry);
}

void FBKVOController::addInfosTo(std::vector<Ref<_FBKVOInfo>>& infos) const {
  const detail::ObservedObjects::Locked objects(*_objectInfosMap);
  objects->forEachPayload([&](const detail::InfoSet& ofObject) {
    for (_FBKVOInfo* info : ofObject.infos()) {
      if (info->_state() == _FBKVOInfo::Observing) infos.push_back(ref(*info));
    }
  });
}

NSString FBKVOController::debugDescription() const {
  std::vector<std::pair<Ref<NSObject>, Ref<NSArray>>> observed;
  {
    const detail::ObservedObjects::Locked objects(*_objectInfosMap);
    objects->forEach([&](Ref<NSObject> object, const detail::InfoSet& infos) {
      std::vector<Value> texts;
      for (const _FBKVOInfo* info : infos.infos()) texts.push_back(info->debugDescription());
      observed.emplace_back(std::move(object), make<NSArray>(std::move(texts)));
    });
  }
  const Ref<NSObject> present = observer();
  NSString text =
      stringWithFormat("<%@:%p observer:<%@:%p>", classObject().name(), static_cast<const void*>(this),
                       present ? present->classObject().name() : "(null)"_ns, static_cast<const void*>(present.get()));
  if (!observed.empty()) text = text + "\n  ";
  for (const auto& [object, infos] : observed) text = text + stringWithFormat("%@ -> %@", object, infos);
  return text + ">";
}

}  // namespace norvik
