#include "NorvikCore/platform/appkit/internal/Binding.h"

#include "NorvikCore/platform/appkit/KeyValueBinding.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/keyvalue/internal/ChangeDelivery.h"
#include "NorvikCore/platform/keyvalue/internal/KeyPathText.h"
#include "NorvikCore/platform/keyvalue/internal/ObserverList.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <string>
#include <utility>

namespace norvik::detail {
namespace {

/// After this number of sets on one thread without agreement, a cycle of bindings is treated as endless.
constexpr int mostRounds = 16;

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
  explicit Carry(const Binding& carried) : binding(carried), outer(innermost) { innermost = this; }
  ~Carry() { innermost = outer; }
  Carry(const Carry&) = delete;
  Carry& operator=(const Carry&) = delete;

  static constinit thread_local Carry* innermost __attribute__((tls_model("initial-exec")));
  static Carry* of(const Binding& binding) {
    Carry* carry = innermost;
    while (carry && &carry->binding != &binding) carry = carry->outer;
    return carry;
  }

  const Binding& binding;
  Carry* const outer;
  int heardOfObserved = 0, heardOfReceiver = 0;  ///< notifications since the last set began
};

constinit thread_local Binding::Carry* Binding::Carry::innermost __attribute__((tls_model("initial-exec"))) = nullptr;

/// The registration of a binding with one of its sides. It receives the changes itself, and has the changed object and
/// the other side at hand. It retains its binding until end(), because the binding also retains its sides.
class Binding::Side final : public Registration {
 public:
  Side(Binding& binding, const Weak<NSObject>& otherSide, const NSString& keyPath, bool isObserved)
      : Registration(binding, recordOf(otherSide), keyPath, {}, nullptr), binding_(&binding), isObserved_(isObserved) {}

  bool deliver(ChangeDelivery& delivery, NSObject& root) override {
    if (binding_->hasNoted(isObserved_)) return true;
    NSObject* other = receiver(delivery);
    if (other) binding_->carry(isObserved_, isObserved_ ? *other : root, isObserved_ ? root : *other);
    return true;
  }

 private:
  const Ref<Binding> binding_;
  const bool isObserved_;
};

// A class that reads keys itself is asked by the key. A path of several keys is not the name of a property.
Binding::KnownProperty::KnownProperty(const NSObject& owner, const NSString& key)
    : ofClass(owner.classObject()), property(ofClass.answersKeysItself() ? nullptr : ofClass.property(key)) {}

Binding::Binding(NSObject& receiver, NSString name, NSObject& observed, NSString keyPath, Ref<NSDictionary> options)
    : receiver_(&receiver),
      observed_(&observed),
      name_(std::move(name)),
      keyPath_(std::move(keyPath)),
      ofReceiver_(receiver, name_),
      ofObserved_(observed, keyPath_),
      isOfValue_(name_ == NSValueBinding),
      options_(std::move(options)),
      transformer_(transformerIn(*options_)) {}

Binding::~Binding() = default;

void Binding::observe() {
  const Ref<NSObject> receiver = receiver_.lock(), observed = observed_.lock();
  if (!receiver || !observed) return;
  static_cast<void>(receiver->valueForKey(name_));
  const Sides made{make<Side>(*this, receiver_, keyPath_, true), make<Side>(*this, observed_, name_, false)};
  detail::observe(*observed, made.ofObserved);
  MutexLock lock(mutex_);
  sides_ = made;
}

void Binding::start() {
  const Ref<NSObject> receiver = receiver_.lock();
  const Ref<Side> side = sides().ofReceiver;
  if (!receiver || !side) return;
  // If another thread has ended the binding meanwhile, the side is not attached.
  detail::observe(*receiver, side);
  isStarted_ = true;
  if (isEnded_) return;
  if (const Ref<NSObject> observed = observed_.lock()) carry(true, *receiver, *observed);
}

void Binding::end() {
  isEnded_ = true;
  Sides ended;
  {
    MutexLock lock(mutex_);
    std::swap(ended, sides_);
  }
  if (!ended.ofReceiver) return;
  endRegistration(receiver_.lock().get(), *ended.ofReceiver);
  endRegistration(observed_.lock().get(), *ended.ofObserved);
}

Binding::Sides Binding::sides() const {
  MutexLock lock(mutex_);
  return sides_;
}

Ref<NSDictionary> Binding::info() const {
  const Ref<NSObject> observed = observed_.lock();
  if (!observed) return nullptr;
  return NSDictionary::dictionaryWith(
      {{NSObservedObjectKey, observed}, {NSObservedKeyPathKey, keyPath_}, {NSOptionsKey, options_}});
}

bool Binding::hasNoted(bool observedChanged) {
  if (!isStarted_ || isEnded_) return true;
  Carry* running = Carry::of(*this);
  if (running) ++(observedChanged ? running->heardOfObserved : running->heardOfReceiver);
  return running;
}

void Binding::carry(bool toReceiver, NSObject& receiver, NSObject& observed) {
  Carry carry(*this);
  for (int round = 0; round < mostRounds; ++round) {
    carry.heardOfObserved = carry.heardOfReceiver = 0;
    if (toReceiver) {
      const bool receiverChangedAgain = setReceiver(receiver, observed, carry);
      if (carry.heardOfObserved == 0 && !receiverChangedAgain) return;
      toReceiver = carry.heardOfObserved > 0;
    } else {
      if (!canWrite(observed)) return;
      setObserved(receiver, observed);
      toReceiver = carry.heardOfReceiver == 0;
    }
    if (isEnded_) return;
  }
  NSException::raise(NSInternalInconsistencyException,
                     "the binding \"" + name_ + "\" of <" + receiver.classObject().name() + "> to \"" + keyPath_ +
                         "\" of <" + observed.classObject().name() + "> never settles");
}

Value Binding::receiverValue(const NSObject& receiver) const {
  const Property* property = ofReceiver_.of(receiver);
  return property ? property->get(receiver) : receiver.valueForKey(name_);
}

Value Binding::observedValue(const NSObject& observed) const {
  const Property* property = ofObserved_.of(observed);
  return property ? property->get(observed) : observed.valueForKeyPath(keyPath_);
}

/// True if a callback has given the receiver another value than the one that was set.
bool Binding::setReceiver(NSObject& receiver, const NSObject& observed, const Carry& carry) {
  Value value = observedValue(observed);
  if (transformer_) value = transformer_->transformedValue(value);
  if (isEnded_) return false;
  const bool sets = receiverValue(receiver) != value;
  if (sets) receiver.setValue_forKey(value, name_);
  if (!isEnded_) showWhetherWritable(receiver, observed);
  // The set itself causes one notification. A setter may adjust the value: the adjusted value is not carried back.
  const int ownNotices = sets ? 1 : 0;
  return carry.heardOfReceiver > ownNotices && receiverValue(receiver) != value;
}

void Binding::setObserved(const NSObject& receiver, NSObject& observed) const {
  Value value = receiverValue(receiver);
  if (transformer_) value = transformer_->reverseTransformedValue(value);
  if (isOn(NSValidatesImmediatelyBindingOption, false) &&
      !observed.validateValue_forKeyPath_error(value, keyPath_, nullptr)) {
    return;
  }
  if (!isEnded_ && observedValue(observed) != value) observed.setValue_forKeyPath(value, keyPath_);
}

bool Binding::canWrite(const NSObject& observed) const {
  if (transformer_ && !transformer_->canReverse()) return false;
  const auto [before, key] = lastKey(keyPath_);
  if (!before) return !isReadOnly(observed, key);
  const Value owner = observed.valueForKeyPath(*before);
  return owner.object() && !isReadOnly(*owner.object(), key);
}

void Binding::showWhetherWritable(NSObject& receiver, const NSObject& observed) const {
  if (!isOfValue_) return;
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
