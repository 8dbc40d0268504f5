// NorvikCore/observation/internal/_FBKVOSharedController.h - the platform's observer behind every FBKVOController.
//
// It finds the observation of a change by the change's context and passes the change to the observer of its controller.
// An observation that was destroyed or has ended is not found, so late changes are ignored.
#pragma once

#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/platform/object/internal/PointerTable.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <span>

namespace norvik {

class NK_EXPORT_FOR_TESTS _FBKVOSharedController
    : public NSObject {  // NOLINT(bugprone-reserved-identifier): a given name
  NK_OBJECT(_FBKVOSharedController, NSObject)

  /// Created on first use and never destroyed.
  [[nodiscard]] static _FBKVOSharedController& sharedController();

  /// If observing raises, the observation ends, also in its controller.
  void observe(NSObject& object, Ref<_FBKVOInfo> info);
  void unobserve(NSObject& object, _FBKVOInfo& info);
  /// `object` is null if it was destroyed; its registrations were destroyed with it.
  void unobserve(NSObject* object, std::span<const Ref<_FBKVOInfo>> infos);

  void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                              void* context) override;
  [[nodiscard]] NSString debugDescription() const;

 private:
  friend class _FBKVOInfo;
  struct Listed {};

  /// The controller of an observation; empty if the observation has ended or the controller is being destroyed.
  [[nodiscard]] Ref<FBKVOController> controller(const _FBKVOInfo& info) const;
  void forget(const _FBKVOInfo& info);
  struct Meant {
    Ref<_FBKVOInfo> info;
    Ref<FBKVOController> controller;
  };
  [[nodiscard]] Meant find(const void* context, const NSObject& object, const NSString& keyPath) const;

  /// Keyed by address; an info that is destroyed removes itself.
  detail::PointerTable<Listed> _infos NK_GUARDED_BY(_mutex);
  mutable detail::WordMutex _mutex;
};

}  // namespace norvik
