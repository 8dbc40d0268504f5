// NorvikCore/observation/internal/_FBKVOInfo.h - one requested observation.
#pragma once

#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/keyvalue/internal/Registration.h"

#include <variant>

namespace norvik {

/// The observation is also its registration with the runtime, and receives the changes itself. So each observation is
/// one object. Two observations are equal if they have the same key path, whatever their handlers and
/// options.
class NK_EXPORT_FOR_TESTS _FBKVOInfo
    : public detail::Registration {  // NOLINT(bugprone-reserved-identifier): a given name
  NK_OBJECT(_FBKVOInfo, NSObject)

  _FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
             FBKVONotificationBlock block, SEL action, void* context);
  /// With a block that gets the change itself instead of a dictionary.
  _FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
             detail::ChangeBlock changeBlock);
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

  /// Passes the change to the observer of the controller, without the shared controller. True in any case, because the
  /// controller ends the observation.
  bool deliver(detail::ChangeDelivery& delivery, NSObject& root) override;

 private:
  friend class FBKVOController;
  friend class _FBKVOSharedController;
  enum State : int { Initial = 0, Observing = 1, Ended = 2 };

  [[nodiscard]] static detail::SideRecord* receiverOf(const FBKVOController& controller);
  [[nodiscard]] const NSString& _keyPath() const noexcept { return keyPath(); }
  [[nodiscard]] NSKeyValueObservingOptions _options() const noexcept { return options(); }
  /// Ended is final.
  [[nodiscard]] State _state() const noexcept {
    if (!isActive()) return Ended;
    return isObserving_.loadRelaxed() ? Observing : Initial;
  }
  [[nodiscard]] void* _context() const noexcept { return context(); }
  [[nodiscard]] SEL _action() const noexcept;
  [[nodiscard]] Ref<NSBlock> _block() const;

  detail::AtomicWord<bool> isObserving_{false};  ///< first, because there is room for it after the registration
  /// Not retained. Used only while the observation is being made, because a controller ends its observations before it
  /// is destroyed.
  FBKVOController* const _controller;
  const std::variant<std::monostate, FBKVONotificationBlock, detail::ChangeBlock, SEL> handler_;
};

}  // namespace norvik
