// NorvikCore/observation/internal/_FBKVOSharedController.h - the platform's observer behind every FBKVOController.
//
// The observations receive changes themselves, so that one more observer costs little more than its call. If the shared
// controller itself is called with a change, it passes the change to the observation that is its context, unless that
// observation has ended.
#pragma once

#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <span>
#include <vector>

namespace norvik {

class NK_EXPORT_FOR_TESTS _FBKVOSharedController
    : public NSObject {  // NOLINT(bugprone-reserved-identifier): a given name
  NK_OBJECT(_FBKVOSharedController, NSObject)

  /// Created on first use and never destroyed.
  [[nodiscard]] static _FBKVOSharedController& sharedController();

  /// If observing raises, the observation ends, also in its controller.
  void observe(NSObject& object, Ref<_FBKVOInfo> info);
  /// Returns the Ref that the runtime had to the observation; empty if it had none any more.
  Ref<detail::Registration> unobserve(NSObject& object, _FBKVOInfo& info);
  /// `object` is null if it was destroyed; its registrations were destroyed with it.
  void unobserve(NSObject* object, std::span<_FBKVOInfo* const> infos);

  /// A controller is listed from its construction to its destruction.
  void list(FBKVOController& controller);
  void unlist(FBKVOController& controller) noexcept;

  void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                              void* context) override;
  [[nodiscard]] NSString debugDescription() const;

 private:
  /// The observations of all controllers that are not ended.
  [[nodiscard]] std::vector<Ref<_FBKVOInfo>> _infos() const;

  FBKVOController* latest_ NK_GUARDED_BY(_mutex) = nullptr;  ///< the controllers are linked
  mutable detail::WordMutex _mutex;
};

}  // namespace norvik
