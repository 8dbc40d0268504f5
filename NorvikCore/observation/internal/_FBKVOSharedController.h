// NorvikCore/observation/internal/_FBKVOSharedController.h - the platform's observer behind every FBKVOController.
//
// It finds, by the context of a change, the observation that is meant, and passes the change to its controller's
// observer. An observation that is gone or has ended is not found, so that late changes are ignored.
#pragma once

#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/platform/object/internal/PointerTable.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <span>

namespace norvik {

class NK_EXPORT _FBKVOSharedController : public NSObject {  // NOLINT(bugprone-reserved-identifier): a given name
  NK_OBJECT(_FBKVOSharedController, NSObject)

  /// Made on first use and never destroyed.
  [[nodiscard]] static _FBKVOSharedController& sharedController();

  /// What that raises ends the observation, also at its controller.
  void observe(NSObject& object, Ref<_FBKVOInfo> info);
  void unobserve(NSObject& object, _FBKVOInfo& info);
  /// `object` is null where it is gone, and its registrations with it.
  void unobserve(NSObject* object, std::span<const Ref<_FBKVOInfo>> infos);

  void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                              void* context) override;
  [[nodiscard]] NSString debugDescription() const;

 private:
  friend class _FBKVOInfo;
  struct Listed {};

  /// The controller of an observation, empty where that has ended or the controller goes.
  [[nodiscard]] Ref<FBKVOController> controller(const _FBKVOInfo& info) const;
  void forget(const _FBKVOInfo& info);
  struct Meant {
    Ref<_FBKVOInfo> info;
    Ref<FBKVOController> controller;
  };
  [[nodiscard]] Meant find(const void* context, const NSObject& object, const NSString& keyPath) const;

  /// By address; an info that goes takes itself out.
  detail::PointerTable<Listed> _infos NK_GUARDED_BY(_mutex);
  mutable detail::WordMutex _mutex;
};

}  // namespace norvik
