// NorvikCore/observation/internal/_FBKVOSharedController.h - the platform's observer behind every FBKVOController.
//
// It lists all observations. Its observations receive changes themselves, so that one more observer costs little more
// than its call. A change with which it is called itself is passed to the observation that is the change's context,
// unless that was destroyed or has ended.
#pragma once

#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <span>

namespace norvik {

class NK_EXPORT _FBKVOSharedController : public NSObject {  // NOLINT(bugprone-reserved-identifier): a given name
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
  /// The controller of an observation; empty if the observation has ended or the controller is being destroyed.
  [[nodiscard]] Ref<FBKVOController> controller(const _FBKVOInfo& info) const;
  void forget(_FBKVOInfo& info);
  void list(_FBKVOInfo& info) NK_REQUIRES(_mutex);
  void unlist(_FBKVOInfo& info) NK_REQUIRES(_mutex);
  [[nodiscard]] Ref<_FBKVOInfo> find(const void* context, const NSString& keyPath) const;

  /// The latest of the listed observations, which are linked; an observation that is destroyed removes itself.
  _FBKVOInfo* _infos NK_GUARDED_BY(_mutex) = nullptr;
  mutable detail::WordMutex _mutex;
};

}  // namespace norvik
