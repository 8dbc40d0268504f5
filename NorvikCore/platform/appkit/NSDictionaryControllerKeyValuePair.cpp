#include "NorvikCore/platform/appkit/NSDictionaryControllerKeyValuePair.h"

#include "NorvikCore/platform/appkit/NSDictionaryController.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/values/NSException.h"

#include <utility>

namespace norvik {
namespace {

/// A key that key-value coding does not interpret as a path or an operator.
bool isPlainKey(const Value& key) {
  const NSString* text = key.string();
  return text && !text->empty() && text->view().find('.') == std::string_view::npos && text->view().front() != '@';
}

}  // namespace

NSDictionaryControllerKeyValuePair::NSDictionaryControllerKeyValuePair(NSDictionaryController& controller,
                                                                       Ref<NSDictionary> dictionary, Value key)
    : controller_(&controller), dictionary_(std::move(dictionary)) {
  key_ = std::move(key);
}

NSDictionaryControllerKeyValuePair::~NSDictionaryControllerKeyValuePair() = default;

Value NSDictionaryControllerKeyValuePair::value() const { return dictionary_->objectForKey(*key_); }

void NSDictionaryControllerKeyValuePair::setValue(const Value& value) {
  const Ref<NSObject> kept = ref(*this);
  if (follows_) return dictionary_->setValue_forKey(value, *key_->string());
  auto* changeable = dynamic_cast<NSMutableDictionary*>(dictionary_.get());
  if (!changeable) {
    NSException::raise(NSInvalidArgumentException,
                       "the dictionary of the entry \"" + key_->description() + "\" is immutable");
  }
  willChangeValueForKey("value");
  if (value.isAbsent()) {
    changeable->removeObjectForKey(*key_);
  } else {
    changeable->setObject(value, *key_);
  }
  didChange();
}

void NSDictionaryControllerKeyValuePair::observeValueForKeyPath(const NSString&, NSObject&,
                                                                const KeyValueChange& change, void*) {
  if (change.isPrior()) {
    willChangeValueForKey("value");
    isChanging_ = follows_;
    if (!follows_) didChangeValueForKey("value");  // a callback stopped the observation: no second notice will come
  } else {
    isChanging_ = false;
    didChange();
  }
}

void NSDictionaryControllerKeyValuePair::didChange() {
  didChangeValueForKey("value");
  if (dictionary_->find(*key_)) return;
  if (const auto controller = controller_.lock()) controller->rearrangeObjects();
}

void NSDictionaryControllerKeyValuePair::follow() {
  if (!isPlainKey(*key_)) return;
  dictionary_->addObserver(*this, *key_->string(), NSKeyValueObservingOptionPrior);
  follows_ = true;
}

void NSDictionaryControllerKeyValuePair::stopFollowing() {
  if (!std::exchange(follows_, false)) return;
  dictionary_->removeObserver(*this, *key_->string());
  if (std::exchange(isChanging_, false)) didChangeValueForKey("value");
}

}  // namespace norvik
