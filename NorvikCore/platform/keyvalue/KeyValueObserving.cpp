#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/keyvalue/internal/ChangeDelivery.h"
#include "NorvikCore/platform/keyvalue/internal/ObserverList.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/internal/SameName.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace norvik {

constinit const NSString NSKeyValueChangeKindKey = "kind";
constinit const NSString NSKeyValueChangeNewKey = "new";
constinit const NSString NSKeyValueChangeOldKey = "old";
constinit const NSString NSKeyValueChangeNotificationIsPriorKey = "notificationIsPrior";

Ref<NSDictionary> KeyValueChange::dictionary() const {
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(4);
  forEachEntry([&](const NSString& key, const Value& value) { entries.push_back({key, value}); });
  return make<NSDictionary>(std::move(entries));
}

namespace detail {
namespace {

using Entry = ObserverList::Entry;

[[gnu::noinline]] bool isAffectedOtherwise(const Entry& entry, std::string_view changed) {
  if (!entry.key) return isSameName(entry.registration->key(entry.depth).view(), changed);
  return std::ranges::any_of(entry.key->affecting,
                             [&](const NSString& key) { return isSameName(key.view(), changed); });
}

/// Inlined as far as it usually goes: the changed key is the observed one.
bool isAffected(const Entry& entry, std::string_view changed) {
  return (entry.key && isSameName(entry.key->key.view(), changed)) || isAffectedOtherwise(entry, changed);
}

/// True if the same registration is notified of the same change at an earlier element of its path, which is circular.
[[gnu::noinline]] bool isHeardEarlierOnItsCircle(const ObserverList& observers, const Entry& entry,
                                                 std::string_view changed) {
  return std::ranges::any_of(observers.entries(), [&](const Entry& other) {
    return other.registration == entry.registration && other.depth < entry.depth && isAffected(other, changed);
  });
}

bool isHeardEarlier(const ObserverList& observers, const Entry& entry, std::string_view changed) {
  return entry.registration->isCircular() && isHeardEarlierOnItsCircle(observers, entry, changed);
}

/// Calls visit(entry) for each registration that a change of the key affects, in the order in which they were made.
template <class Visit>
void forEachAffected(const ObserverList& observers, std::string_view changed, Visit&& visit) {
  const ObservedKey* known = nullptr;  // consecutive entries usually have the same key, which is then compared once
  bool isKnownAffected = false;
  for (const Entry& entry : observers.entries()) {
    if (!entry.registration) continue;
    if (!entry.key || entry.key != known) {
      known = entry.key;
      isKnownAffected = isAffected(entry, changed);
    }
    if (isKnownAffected) visit(entry);
  }
}

/// Finds consecutive entries that have the same value, because they observe the same key of the object itself.
class Neighbours {
 public:
  /// True if the value is another than that of the entry before; call it for each entry in turn.
  bool startsNew(const Entry& entry) noexcept {
    const ObservedKey* key = entry.registration->isLast(entry.depth) ? entry.key : nullptr;
    const bool isNew = !key || key != key_;
    key_ = key;
    return isNew;
  }
  void forget() noexcept { key_ = nullptr; }

 private:
  const ObservedKey* key_ = nullptr;
};

/// Reads a value once for all observers of the same key of the object itself.
class Reader {
 public:
  explicit Reader(const NSObject& object) noexcept : object_(object) {}

  Value read(const Entry& entry) {
    const Registration& registration = *entry.registration;
    if (!registration.isLast(entry.depth)) return registration.valueFrom(object_, entry.depth);
    const NSString& key = registration.key(entry.depth);
    if (!known_ || *known_ != key) {
      value_ = registration.valueFrom(object_, entry.depth);
      known_ = &key;
    }
    return value_;
  }

 private:
  const NSObject& object_;
  const NSString* known_ = nullptr;
  Value value_;
};

/// The value before a change. If it cannot be read, the change may repair that; so the path counts as ending early.
Value readBefore(Reader& reader, const Entry& entry) {
  try {
    return reader.read(entry);
  } catch (const NSException&) {
    return Value::null();
  }
}

/// False if the registration's observer was removed or destroyed; exceptions from reading its path are then ignored.
bool isHeard(const Entry& entry) noexcept {
  return entry.registration->isActive() && !entry.registration->isObserverGone();
}

/// Ends a registration if its observer was destroyed without being removed.
void prune(const Entry& entry, NSObject& here) {
  Registration& registration = *entry.registration;
  if (!registration.isObserverGone() || !registration.end()) return;
  if (const Ref<NSObject> root = registration.root(here, entry.depth)) detach(root.get(), registration, 0);
  registration.leavePath();
}

[[gnu::noinline]] bool tellOfPath(const Entry& entry, NSObject& here, ChangeDelivery& delivery) {
  const Ref<NSObject> root = entry.registration->root(here, entry.depth);
  return !root || entry.registration->deliver(delivery, *root);
}

/// Calls the observer; false if it is destroyed.
bool tell(const Entry& entry, NSObject& here, ChangeDelivery& delivery) {
  Registration& registration = *entry.registration;
  if (!registration.isActive()) return true;
  return entry.depth == 0 ? registration.deliver(delivery, here) : tellOfPath(entry, here, delivery);
}

}  // namespace

AnnouncedChange::AnnouncedChange(NSObject& object, std::string_view key)
    : AnnouncedChange(object, key, Hold::OuterClaim) {
  if (!object.isObserved()) return;
  bool isTaken = false;
  observers_ = SideRecord::find(object)->claimList(isTaken);
  hold_ = isTaken ? Hold::Claim : Hold::OuterClaim;
  if (!observers_) retain();
  announce();
}

AnnouncedChange::AnnouncedChange(NSObject& object, std::string_view key, InAnyOrder)
    : AnnouncedChange(object, key, Hold::Counts) {
  retain();
  announce();
}

void AnnouncedChange::retain() {
  observers_ = observersOf(object_).take();
  if (!observers_) return;
  detail::retain(&object_);
  hold_ = Hold::Counts;
}

AnnouncedChange::~AnnouncedChange() {
  if (!observers_ || hold_ == Hold::OuterClaim) return;
  if (hold_ == Hold::Claim) {
    SideRecord::find(object_)->endClaim();
  } else {
    release(observers_);
    release(&object_);
  }
}

void AnnouncedChange::announce() {
  if (!observers_) return;
  const auto& observers = static_cast<const ObserverList&>(*observers_);
  if (observers.wants(NSKeyValueObservingOptionOld) || observers.wants(NSKeyValueObservingOptionPrior)) {
    announceToAll();
  }
}

void AnnouncedChange::announceToAll() {
  const auto& observers = static_cast<const ObserverList&>(*observers_);
  bool isPriorWanted = false;
  Reader reader(object_);
  Neighbours neighbours;
  forEachAffected(observers, key_, [&](const Entry& entry) {
    const Registration& registration = *entry.registration;
    isPriorWanted = isPriorWanted || registration.wants(NSKeyValueObservingOptionPrior);
    if (!registration.wants(NSKeyValueObservingOptionOld) || !neighbours.startsNew(entry)) return;
    if (oldValueCount_++ == 0) {
      firstOldValue_ = readBefore(reader, entry);
    } else {
      furtherOldValues_.push_back(readBefore(reader, entry));
    }
  });
  if (!isPriorWanted) return;
  ChangeDelivery delivery(object_);
  neighbours.forget();
  std::size_t old = 0;
  forEachAffected(observers, key_, [&](const Entry& entry) {
    const bool wantsOld = entry.registration->wants(NSKeyValueObservingOptionOld);
    if (wantsOld && neighbours.startsNew(entry)) ++old;
    if (!entry.registration->wants(NSKeyValueObservingOptionPrior) || isHeardEarlier(observers, entry, key_)) return;
    delivery.setChange(wantsOld ? oldValue(old - 1) : Value(), Value(), true);
    (void)tell(entry, object_, delivery);  // a destroyed observer is detected again after the change
  });
}

const Value& AnnouncedChange::oldValue(std::size_t index) const {
  return index == 0 ? firstOldValue_ : furtherOldValues_[index - 1];
}

void AnnouncedChange::complete() {
  if (!observers_) return;
  const auto& observers = static_cast<const ObserverList&>(*observers_);
  const Entry* only = observers.onlyPlain();
  if (!only) return completeForAll();
  if (!isAffected(*only, key_) || !only->registration->isActive()) return;
  ChangeDelivery delivery(object_);
  if (!only->registration->deliver(delivery, object_)) prune(*only, object_);
}

void AnnouncedChange::completeForAll() {
  const auto& observers = static_cast<const ObserverList&>(*observers_);
  std::exception_ptr first;
  const auto guarded = [&](auto&& step) {
    try {
      step();
    } catch (...) {
      if (!first) first = std::current_exception();
    }
  };
  const auto follow = [&](const Entry& entry) {
    if (entry.registration->isLast(entry.depth) || !isHeard(entry)) return;
    guarded([&] {
      if (const Ref<NSObject> root = entry.registration->root(object_, entry.depth)) entry.registration->follow(*root);
    });
  };
  if (observers.hasPaths()) forEachAffected(observers, key_, follow);
  constexpr auto valueOptions = NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew;
  Reader reader(object_);
  ChangeDelivery delivery(object_);
  Neighbours withOld, alike;
  std::uint64_t lastOptions = 0;
  std::size_t old = 0;
  bool isAnyGone = false;
  forEachAffected(observers, key_, [&](const Entry& entry) {
    const Registration& registration = *entry.registration;
    const bool wantsOld = registration.wants(NSKeyValueObservingOptionOld);
    if (wantsOld && withOld.startsNew(entry)) ++old;
    if (!registration.isActive() || isHeardEarlier(observers, entry, key_)) return;
    guarded([&] {
      const std::uint64_t options = registration.options() & valueOptions;
      if (alike.startsNew(entry) || options != lastOptions) {
        alike.forget();  // until the value is read
        if (options == 0) {
          delivery.setChangeWithoutValues();
        } else {
          Value after;
          if (registration.wants(NSKeyValueObservingOptionNew)) {
            try {
              after = reader.read(entry);
            } catch (...) {
              if (isHeard(entry)) throw;
              isAnyGone = true;
              return;
            }
          }
          delivery.setChange(wantsOld ? oldValue(old - 1) : Value(), std::move(after), false);
        }
        lastOptions = options;
        alike.startsNew(entry);
      }
      if (!tell(entry, object_, delivery)) isAnyGone = true;
    });
  });
  if (isAnyGone) {
    // The latest first, because among equal registrations the lists find the latest one first.
    for (auto entry = observers.entries().rbegin(); entry != observers.entries().rend(); ++entry) {
      if (entry->registration && isAffected(*entry, key_)) prune(*entry, object_);
    }
  }
  if (first) std::rethrow_exception(first);
}

namespace {

/// A change that was announced by willChangeValueForKey on this thread and is not yet complete.
struct Pending {
  Pending(NSObject& changed, const NSString& name)
      : object(&changed), key(name), change(changed, key.view(), AnnouncedChange::InAnyOrder()) {}

  NSObject* const object;
  const NSString key;
  AnnouncedChange change;
};

using PendingChanges = std::vector<std::unique_ptr<Pending>>;

/// Null while there are none, so that nothing is left when a thread ends.
thread_local PendingChanges* pendingChanges = nullptr;

NSString described(const Registration& registration, const NSObject& observer, const NSString& root) {
  static constexpr std::pair<NSKeyValueObservingOptions, const char*> names[] = {
      {NSKeyValueObservingOptionNew, "New"},
      {NSKeyValueObservingOptionOld, "Old"},
      {NSKeyValueObservingOptionInitial, "Initial"},
      {NSKeyValueObservingOptionPrior, "Prior"}};
  std::string options;
  for (const auto& [option, name] : names) {
    if (registration.wants(option)) options += (options.empty() ? "" : "|") + std::string(name);
  }
  return stringWithFormat("    <%@: %p> observes \"%@\"%@, options %@, context %p\n", observer.classObject().name(),
                          static_cast<const void*>(&observer), registration.keyPath(), root,
                          NSString(options.empty() ? "none" : options), registration.context());
}

}  // namespace
}  // namespace detail

void detail::observe(NSObject& object, Ref<Registration> registration) {
  registration->setRoot(object);
  if (attachPlain(object, registration)) return;
  registration->check(object);
  const bool wantsInitial = registration->wants(NSKeyValueObservingOptionInitial);
  if (registration->length() == 1 && !wantsInitial) {
    attach(object, std::move(registration), 0);
    return;
  }
  const Ref<NSObject> kept = ref(object);  // the initial call may release it
  if (!attach(object, registration, 0)) return;
  try {
    registration->follow(object);
    if (!wantsInitial || !registration->isActive()) return;
    const bool wantsNew = registration->wants(NSKeyValueObservingOptionNew);
    ChangeDelivery delivery(object);
    delivery.setChange(Value(), wantsNew ? registration->valueFrom(object, 0) : Value(), false);
    (void)registration->deliver(delivery, object);
  } catch (...) {
    endRegistration(&object, *registration);
    throw;
  }
}

void NSObject::addObserver(NSObject& observer, const NSString& keyPath, NSKeyValueObservingOptions options,
                           void* context) {
  detail::observe(*this, make<detail::Registration>(observer, keyPath, options, context));
}

namespace {

void remove(NSObject& object, NSObject& observer, const NSString& keyPath, const void* const* context) {
  const Ref<detail::Registration> removed = detail::takeRegistration(object, observer, keyPath, context);
  if (removed) return removed->leavePath();
  NSException::raise(NSRangeException, "cannot remove an observer <" + observer.classObject().name().str() +
                                           "> for the key path \"" + keyPath.utf8() + "\" from <" +
                                           object.classObject().name().str() +
                                           "> because it is not registered as an observer");
}

}  // namespace

void NSObject::removeObserver(NSObject& observer, const NSString& keyPath) {
  remove(*this, observer, keyPath, nullptr);
}

void NSObject::removeObserver(NSObject& observer, const NSString& keyPath, void* context) {
  const void* wanted = context;
  remove(*this, observer, keyPath, &wanted);
}

void NSObject::willChangeValueForKey(const NSString& key) {
  if (!isObserved()) return;
  auto change = std::make_unique<detail::Pending>(*this, key);  // may call observers, which may call this function
  if (!detail::pendingChanges) detail::pendingChanges = new detail::PendingChanges;
  detail::pendingChanges->push_back(std::move(change));
}

void NSObject::didChangeValueForKey(const NSString& key) {
  detail::PendingChanges* pending = detail::pendingChanges;
  if (!pending) return;
  const auto announced = std::find_if(pending->rbegin(), pending->rend(),
                                      [&](const auto& change) { return change->object == this && change->key == key; });
  if (announced == pending->rend()) return;
  const std::unique_ptr<detail::Pending> made = std::move(*announced);
  pending->erase(std::next(announced).base());
  if (pending->empty()) delete std::exchange(detail::pendingChanges, nullptr);
  made->change.complete();
}

std::optional<NSString> NSObject::observationInfo() const {
  const Ref<const detail::ObserverList> observers = detail::observersOf(*this);
  if (!observers) return std::nullopt;
  NSString lines;
  for (const detail::ObserverList::Entry& entry : observers->entries()) {
    if (!entry.registration || !entry.registration->isActive()) continue;
    Ref<NSObject> kept;
    const NSObject* observer = entry.registration->observer(kept);
    if (!observer) continue;
    const Ref<NSObject> root = entry.registration->root(const_cast<NSObject&>(*this), entry.depth);
    if (!root) continue;
    const NSString of = entry.depth == 0 ? NSString()
                                         : stringWithFormat(" of <%@: %p>", root->classObject().name(),
                                                            static_cast<const void*>(root.get()));
    lines = lines + detail::described(*entry.registration, *observer, of);
  }
  if (lines.empty()) return std::nullopt;
  return "(\n" + lines + ")";
}

void NSObject::observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange&, void*) {
  NSException::raise(NSInternalInconsistencyException,
                     "an observer of class " + classObject().name().str() + " was notified of a change of \"" +
                         keyPath.utf8() + "\" of <" + object.classObject().name().str() + "> and does not handle it");
}

}  // namespace norvik
