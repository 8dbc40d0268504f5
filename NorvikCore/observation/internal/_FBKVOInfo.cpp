#include "NorvikCore/observation/internal/_FBKVOInfo.h"

#include "NorvikCore/observation/internal/_FBKVOSharedController.h"
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

}  // namespace

_FBKVOInfo::_FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
                       FBKVONotificationBlock block, SEL action, void* context)
    : Registration(_FBKVOSharedController::sharedController(), std::move(keyPath), options, this),
      _controller(&controller),
      _action(action),
      _context(context),
      _block(std::move(block)) {}

_FBKVOInfo::_FBKVOInfo(FBKVOController& controller, NSString keyPath, NSKeyValueObservingOptions options,
                       detail::ChangeBlock changeBlock)
    : Registration(_FBKVOSharedController::sharedController(), std::move(keyPath), options, this),
      _controller(&controller),
      _context(nullptr),
      _changeBlock(std::move(changeBlock)) {}

_FBKVOInfo::~_FBKVOInfo() {
  if (isListed_) _FBKVOSharedController::sharedController().forget(*this);
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

NSString _FBKVOInfo::description() const {
  NSString text =
      stringWithFormat("<%@:%p keyPath:%@", classObject().name(), static_cast<const void*>(this), _keyPath());
  if (_options() != 0) text = text + " options:" + namesOf(_options());
  if (_action) text = text + " action:" + _action.name();
  if (_context) text = text + stringWithFormat(" context:%p", _context);
  if (const Ref<NSBlock> block = _block ? _block.object() : _changeBlock.object()) {
    text = text + stringWithFormat(" block:%p", static_cast<const void*>(block.get()));
  }
  return text + ">";
}

}  // namespace norvik
