// NorvikCore/observation/internal/_FBKVOInfo.h - one requested observation.
#pragma once

#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/keyvalue/internal/Registration.h"

namespace norvik {

/// The observation is also its registration with the runtime; the context of the registration is its address. So each
/// observation is one object. Two observations are equal if they have the same key path, whatever their handlers and
/// options.
class NK_EXPORT _FBKVOInfo : public detail::Registration {  // NOLINT(bugprone-reserved-identifier): a given name
  NK_OBJECT(_FBKVOInfo, NSObject)

  _FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
             FBKVONotificationBlock block, SEL action, void* context);
  /// With a block that gets the change itself instead of a dictionary.
  _FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
             detail::ChangeBlock changeBlock);
  ~_FBKVOInfo() override;
  [[nodiscard]] static Ref<_FBKVOInfo> initWithController_keyPath_options_block_action_context(
      FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options, FBKVONotificationBlock block,
      SEL action, void* context);
  [[nodiscard]] static Ref<_FBKVOInfo> initWithController_keyPath_options_block(FBKVOController& controller,
                                                                                NSString keyPath,
                                                                                NSKeyValueObservingOptions options,
                                                                                FBKVONotificationBlock block);
  [[nodiscard]] static Ref<_FBKVOInfo> initWithController_keyPath_options_action(FBKVOController& controller,
                                                                                 NSString keyPath,
                                                                                 NSKeyValueObservingOptions options,
                                                                                 SEL action);
  [[nodiscard]] static Ref<_FBKVOInfo> initWithController_keyPath_options_context(FBKVOController& controller,
                                                                                  NSString keyPath,
                                                                                  NSKeyValueObservingOptions options,
                                                                                  void* context);
  /// Without options and handler, for finding an equal observation.
  [[nodiscard]] static Ref<_FBKVOInfo> initWithController_keyPath(FBKVOController& controller, NSString keyPath);

  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] NSString description() const override;
  [[nodiscard]] NSString debugDescription() const { return description(); }

 private:
  friend class _FBKVOSharedController;
  enum State : int { Initial = 0, Observing = 1, Ended = 2 };

  [[nodiscard]] const NSString& _keyPath() const noexcept { return keyPath(); }
  [[nodiscard]] NSKeyValueObservingOptions _options() const noexcept { return options(); }
  /// The caller must hold the shared controller's mutex. Ended is final.
  [[nodiscard]] State _state() const noexcept {
    if (!isActive()) return Ended;
    return isListed_ ? Observing : Initial;
  }

  /// Not retained. Used only while this observation is listed, because a controller ends its observations before it is
  /// destroyed.
  FBKVOController* const _controller;
  const SEL _action;
  void* const _context;
  const FBKVONotificationBlock _block;
  const detail::ChangeBlock _changeBlock;
  bool isListed_ = false;             ///< whether it is in the shared controller's table; guarded by its mutex
  const NSObject* object_ = nullptr;  ///< the observed object, compared by address only
};

}  // namespace norvik
