#include "NorvikCore/observation/internal/_FBKVOInfo.h"

#include "NorvikCore/observation/internal/ObservedObjects.h"
#include "NorvikCore/observation/internal/_FBKVOSharedController.h"
#include "NorvikCore/platform/keyvalue/internal/ChangeDelivery.h"
#include "NorvikCore/platform/values/Format.h"

#include <string>
#include <utility>

namespace norvik {
namespace {

/// The names of the options, from the lowest bit up; bits above these have no name.
std::string namesOf(NSKeyValueObservingOptions options) {
  static constexpr std::pair<NSKeyValueObservingOptions, const char*> names[] = {
      {NSKeyValueObservingOptionNew, "NSKeyValueObservingOptionNew"},
      {NSKeyValueObservingOptionOld, "NSKeyValueObservingOptionOld"},
      {NSKeyValueObservingOptionInitial, "NSKeyValueObservingOptionInitial"},
      {NSKeyValueObservingOptionPrior, "NSKeyValueObservingOptionPrior"}};
  std::string text;
  for (const auto& [option, name] : names) {
    if ((options & option) != 0) text += (text.empty() ? "" : "|") + std::string(name);
  }
  return text;
}

std::variant<std::monostate, FBKVONotificationBlock, detail::ChangeBlock, SEL> handlerOf(FBKVONotificationBlock block,
                                                                                         SEL action) {
  if (block) return block;
  if (action) return action;
  return {};
}

}  // namespace

detail::SideRecord* _FBKVOInfo::receiverOf(const FBKVOController& controller) {
  return controller._objectInfosMap->receiver();
}

_FBKVOInfo::_FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
                       FBKVONotificationBlock block, SEL action, void* context)
    : Registration(_FBKVOSharedController::sharedController(), receiverOf(controller), std::move(keyPath), options,
                   context),
      _controller(&controller),
      handler_(handlerOf(std::move(block), action)) {}

_FBKVOInfo::_FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
                       detail::ChangeBlock changeBlock)
    : Registration(_FBKVOSharedController::sharedController(), receiverOf(controller), std::move(keyPath), options,
                   nullptr),
      _controller(&controller),
      handler_(std::move(changeBlock)) {}

bool _FBKVOInfo::deliver(detail::ChangeDelivery& delivery, NSObject& root) {
  NSObject* observer = receiver(delivery);
  if (!observer) return true;
  if (const auto* changeBlock = std::get_if<detail::ChangeBlock>(&handler_)) {
    (*changeBlock)(*observer, root, delivery.change(), keyPath());
  } else if (const auto* block = std::get_if<FBKVONotificationBlock>(&handler_)) {
    (*block)(*observer, root, delivery.dictionary(FBKVONotificationKeyPathKey, keyPath()));
  } else if (const auto* action = std::get_if<SEL>(&handler_)) {
    observer->performSelector(*action, delivery.change().dictionary(), ref(root));
  } else {
    observer->observeValueForKeyPath(keyPath(), root, delivery.change(), _context());
  }
  return true;
}

Ref<_FBKVOInfo> _FBKVOInfo::initWithController_keyPath_options_block_action_context(FBKVOController& controller,
                                                                                    NSString keyPath,
                                                                                    NSKeyValueObservingOptions options,
                                                                                    FBKVONotificationBlock block,
                                                                                    SEL action, void* context) {
  return make<_FBKVOInfo>(controller, std::move(keyPath), options, std::move(block), action, context);
}

Ref<_FBKVOInfo> _FBKVOInfo::initWithController_keyPath_options_block(FBKVOController& controller, NSString keyPath,
                                                                     NSKeyValueObservingOptions options,
                                                                     FBKVONotificationBlock block) {
  return initWithController_keyPath_options_block_action_context(controller, std::move(keyPath), options,
                                                                 std::move(block), SEL(), nullptr);
}

Ref<_FBKVOInfo> _FBKVOInfo::initWithController_keyPath_options_action(FBKVOController& controller, NSString keyPath,
                                                                      NSKeyValueObservingOptions options, SEL action) {
  return initWithController_keyPath_options_block_action_context(controller, std::move(keyPath), options, nullptr,
                                                                 action, nullptr);
}

Ref<_FBKVOInfo> _FBKVOInfo::initWithController_keyPath_options_context(FBKVOController& controller, NSString keyPath,
                                                                       NSKeyValueObservingOptions options,
                                                                       void* context) {
  return initWithController_keyPath_options_block_action_context(controller, std::move(keyPath), options, nullptr,
                                                                 SEL(), context);
}

Ref<_FBKVOInfo> _FBKVOInfo::initWithController_keyPath(FBKVOController& controller, NSString keyPath) {
  return initWithController_keyPath_options_block_action_context(controller, std::move(keyPath),
                                                                 NSKeyValueObservingOptions{}, nullptr, SEL(), nullptr);
}

bool _FBKVOInfo::isEqual(const NSObject& other) const {
  if (this == &other) return true;
  if (!other.isKindOfClass(classObject())) return false;
  return static_cast<const _FBKVOInfo&>(other)._keyPath() == _keyPath();
}

std::size_t _FBKVOInfo::hash() const { return std::hash<NSString>()(_keyPath()); }

SEL _FBKVOInfo::_action() const noexcept {
  const auto* action = std::get_if<SEL>(&handler_);
  return action ? *action : SEL();
}

Ref<NSBlock> _FBKVOInfo::_block() const {
  if (const auto* block = std::get_if<FBKVONotificationBlock>(&handler_)) return block->object();
  if (const auto* block = std::get_if<detail::ChangeBlock>(&handler_)) return block->object();
  return nullptr;
}

NSString _FBKVOInfo::description() const {
  NSString text =
      stringWithFormat("<%@:%p keyPath:%@", classObject().name(), static_cast<const void*>(this), _keyPath());
  if (_options() != 0) text = text + " options:" + namesOf(_options());
  if (const SEL action = _action()) text = text + " action:" + action.name();
  if (_context()) text = text + stringWithFormat(" context:%p", _context());
  if (const Ref<NSBlock> block = _block()) {
    text = text + stringWithFormat(" block:%p", static_cast<const void*>(block.get()));
  }
  return text + ">";
}

}  // namespace norvik
