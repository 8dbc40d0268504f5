#include "NorvikCore/platform/appkit/internal/Binding.h"

#include "NorvikCore/platform/appkit/KeyValueBinding.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/keyvalue/internal/KeyPathText.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <string>
#include <utility>

namespace norvik::detail {
namespace {

/// After this number of sets on one thread without agreement, a cycle of bindings is treated as endless.
constexpr int mostRounds = 16;

// The contexts of the observations. They identify the side that changed, also if both sides are one object.
constexpr char observedSide = 0, receiverSide = 0;
void* contextOf(const char& side) noexcept { return const_cast<char*>(&side); }

/// The option; absent if it is missing or the null marker.
Value optionIn(const NSDictionary& options, const NSString& option) {
  Value value = options.objectForKey(option);
  return value.isNull() ? Value() : value;
}

Ref<NSValueTransformer> transformerIn(const NSDictionary& options) {
  if (const Value given = optionIn(options, NSValueTransformerBindingOption); !given.isAbsent()) {
    return given.as<Ref<NSValueTransformer>>();
  }
  const Value name = optionIn(options, NSValueTransformerNameBindingOption);
  if (name.isAbsent()) return nullptr;
  auto named = NSValueTransformer::valueTransformerForName(name.as<NSString>());
  if (!named) {
    NSException::raise(NSInvalidArgumentException, "no value transformer has the name \"" + name.description() + "\"");
  }
  return named;
}

/// True if the class declares the key and a setter for it.
bool hasSetter(const Class& owner, const NSString& key) {
  const Property* property = owner.property(key);
  if (property && property->set) return true;
  std::string setter = "set" + key.str() + ":";
  if (setter[3] >= 'a' && setter[3] <= 'z') setter[3] = static_cast<char>(setter[3] - 'a' + 'A');
  return owner.instanceMethod(setter) != nullptr;
}

/// True if setting the key cannot work. A key that the class does not declare may still be handled by the class itself.
bool isReadOnly(const NSObject& owner, const NSString& key) {
  if (dynamic_cast<const NSDictionary*>(&owner)) return !dynamic_cast<const NSMutableDictionary*>(&owner);
  const Class& c = owner.classObject();
  return (c.property(key) || c.instanceMethod(key)) && !hasSetter(c, key);
}

}  // namespace

/// A change that a binding is carrying on this thread. Notifications that the binding gets meanwhile are counted, not
/// carried: the running carry checks the counts after each set.
struct Binding::Carry {
  explicit Carry(const Binding& carried) : binding(carried), outer(innermost()) { innermost() = this; }
  ~Carry() { innermost() = outer; }
  Carry(const Carry&) = delete;
  Carry& operator=(const Carry&) = delete;

  static Carry*& innermost() {
    thread_local Carry* carry = nullptr;
    return carry;
  }
  static Carry* of(const Binding& binding) {
    Carry* carry = innermost();
    while (carry && &carry->binding != &binding) carry = carry->outer;
    return carry;
  }

  const Binding& binding;
  Carry* const outer;
  int heardOfObserved = 0, heardOfReceiver = 0;  ///< notifications since the last set began
};

Binding::Binding(NSObject& receiver, NSString name, NSObject& observed, NSString keyPath, Ref<NSDictionary> options)
    : receiver_(&receiver),
      observed_(&observed),
      name_(std::move(name)),
      keyPath_(std::move(keyPath)),
      options_(std::move(options)),
      transformer_(transformerIn(*options_)) {}

Binding::~Binding() = default;

void Binding::observe() {
  const Ref<NSObject> receiver = receiver_.lock(), observed = observed_.lock();
  if (!receiver || !observed) return;
  static_cast<void>(receiver->valueForKey(name_));
  observed->addObserver(*this, keyPath_, {}, contextOf(observedSide));
  observesObserved_ = true;
}

void Binding::start() {
  const Ref<NSObject> receiver = receiver_.lock();
  if (!receiver) return;
  receiver->addObserver(*this, name_, {}, contextOf(receiverSide));
  observesReceiver_ = true;
  isStarted_ = true;
  if (isEnded_) return end();  // another thread ended the binding before this registration was visible to it
  carry(true);
}

void Binding::end() {
  isEnded_ = true;
  if (const auto receiver = receiver_.lock(); observesReceiver_.exchange(false) && receiver) {
    receiver->removeObserver(*this, name_, contextOf(receiverSide));
  }
  if (const auto observed = observed_.lock(); observesObserved_.exchange(false) && observed) {
    observed->removeObserver(*this, keyPath_, contextOf(observedSide));
  }
}

Ref<NSDictionary> Binding::info() const {
  const Ref<NSObject> observed = observed_.lock();
  if (!observed) return nullptr;
  return NSDictionary::dictionaryWith(
      {{NSObservedObjectKey, observed}, {NSObservedKeyPathKey, keyPath_}, {NSOptionsKey, options_}});
}

void Binding::observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void* context) {
  if (!isStarted_ || isEnded_) return;
  const bool observedChanged = context == contextOf(observedSide);
  if (Carry* running = Carry::of(*this)) {
    ++(observedChanged ? running->heardOfObserved : running->heardOfReceiver);
  } else {
    carry(observedChanged);
  }
}

void Binding::carry(bool toReceiver) {
  const Ref<NSObject> receiver = receiver_.lock(), observed = observed_.lock();
  if (!receiver || !observed) return;
  Carry carry(*this);
  for (int round = 0; round < mostRounds; ++round) {
    carry.heardOfObserved = carry.heardOfReceiver = 0;
    if (toReceiver) {
      const bool receiverChangedAgain = setReceiver(*receiver, *observed, carry);
      if (carry.heardOfObserved == 0 && !receiverChangedAgain) return;
      toReceiver = carry.heardOfObserved > 0;
    } else {
      if (!canWrite(*observed)) return;
      setObserved(*receiver, *observed);
      toReceiver = carry.heardOfReceiver == 0;
    }
    if (isEnded_) return;
  }
  NSException::raise(NSInternalInconsistencyException,
                     "the binding \"" + name_ + "\" of <" + receiver->classObject().name() + "> to \"" + keyPath_ +
                         "\" of <" + observed->classObject().name() + "> never settles");
}

/// True if a callback has given the receiver another value than the one that was set.
bool Binding::setReceiver(NSObject& receiver, const NSObject& observed, const Carry& carry) {
  Value value = observed.valueForKeyPath(keyPath_);
  if (transformer_) value = transformer_->transformedValue(value);
  if (isEnded_) return false;
  const bool sets = receiver.valueForKey(name_) != value;
  if (sets) receiver.setValue_forKey(value, name_);
  if (!isEnded_) showWhetherWritable(receiver, observed);
  // The set itself causes one notification. A setter may adjust the value: the adjusted value is not carried back.
  const int ownNotices = sets ? 1 : 0;
  return carry.heardOfReceiver > ownNotices && receiver.valueForKey(name_) != value;
}

void Binding::setObserved(const NSObject& receiver, NSObject& observed) const {
  Value value = receiver.valueForKey(name_);
  if (transformer_) value = transformer_->reverseTransformedValue(value);
  if (isOn(NSValidatesImmediatelyBindingOption, false) &&
      !observed.validateValue_forKeyPath_error(value, keyPath_, nullptr)) {
    return;
  }
  if (!isEnded_ && observed.valueForKeyPath(keyPath_) != value) observed.setValue_forKeyPath(value, keyPath_);
}

bool Binding::canWrite(const NSObject& observed) const {
  if (transformer_ && !transformer_->canReverse()) return false;
  const auto [before, key] = lastKey(keyPath_);
  if (!before) return !isReadOnly(observed, key);
  const Value owner = observed.valueForKeyPath(*before);
  return owner.object() && !isReadOnly(*owner.object(), key);
}

void Binding::showWhetherWritable(NSObject& receiver, const NSObject& observed) const {
  if (name_ != NSValueBinding) return;
  const auto show = [&](const NSString& key, const NSString& option, bool otherwise) {
    if (!isOn(option, otherwise) || !hasSetter(receiver.classObject(), key)) return;
    if (infoForBinding(receiver, key)) return;
    const Value writable = canWrite(observed);
    if (receiver.valueForKey(key) != writable) receiver.setValue_forKey(writable, key);
  };
  show(NSEditableBinding, NSConditionallySetsEditableBindingOption, true);
  show(NSEnabledBinding, NSConditionallySetsEnabledBindingOption, false);
}

bool Binding::isOn(const NSString& option, bool otherwise) const {
  const Value value = optionIn(*options_, option);
  return value.isAbsent() ? otherwise : value.as<bool>();
}

}  // namespace norvik::detail
