#include "NorvikCore/platform/runtime/KeyValueObserving.h"

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/runtime/Weak.h"
#include "NorvikCore/platform/runtime/internal/ObjectAccess.h"
#include "NorvikCore/platform/values/internal/raise.h"

#include <algorithm>
#include <array>
#include <memory>
#include <unordered_map>
#include <vector>

namespace norvik {
namespace {

/// One observer of one path of one object.
///
/// The registration stands in the table once for each object along the path, under the key that leads on from there.
/// When an object along the path is exchanged, the entries behind it move to the objects now found there.
struct Registration {
  Registration(NSObject& observed, NSObject& observer, const NSString& path, NSKeyValueObservingOptions wanted,
               void* tag)
      : root(&observed),
        observerAddress(&observer),
        observerReference(&observer),
        keyPath(path),
        keys(path.componentsSeparatedBy(".")),
        options(wanted),
        context(tag) {}

  [[nodiscard]] bool wants(NSKeyValueObservingOptions option) const noexcept { return (options & option) != 0; }

  const Weak<NSObject> root;
  const NSObject* const observerAddress;
  const Weak<NSObject> observerReference;
  const NSString keyPath;
  const std::vector<NSString> keys;
  const NSKeyValueObservingOptions options;
  void* const context;
  std::atomic<bool> isActive{true};
};

using RegistrationPointer = std::shared_ptr<Registration>;

/// A registration at one element of its path.
struct Entry {
  RegistrationPointer registration;
  std::size_t depth;
};

struct Stripe {
  Mutex mutex;
  std::unordered_map<const NSObject*, std::vector<Entry>> entries NK_GUARDED_BY(mutex);
};

Stripe& stripeOf(const NSObject& object) {
  static auto& stripes = *new std::array<Stripe, 64>;
  return stripes[(reinterpret_cast<std::uintptr_t>(&object) >> 5) % stripes.size()];
}

void addEntry(const NSObject& object, const RegistrationPointer& registration, std::size_t depth) {
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  stripe.entries[&object].push_back({registration, depth});
  detail::ObjectAccess::setObserved(object, true);
}

void removeEntry(const NSObject& object, const Registration& registration, std::size_t depth) {
  RegistrationPointer last;  // outlives the lock: what a registration holds must not go under it
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  const auto found = stripe.entries.find(&object);
  if (found == stripe.entries.end()) return;
  auto& entries = found->second;
  const auto entry = std::ranges::find_if(
      entries, [&](const Entry& e) { return e.registration.get() == &registration && e.depth == depth; });
  if (entry == entries.end()) return;
  last = std::move(entry->registration);
  entries.erase(entry);
  if (entries.empty()) {
    stripe.entries.erase(found);
    detail::ObjectAccess::setObserved(object, false);
  }
}

bool affects(const NSObject& object, const NSString& changed, const NSString& observed, int depth = 0) {
  constexpr int deepestChain = 16;  // of keys that affect keys; a circle in the statements ends here
  if (changed == observed) return true;
  if (depth == deepestChain) return false;
  const auto affecting = object.classObject().keysAffecting(observed);
  return std::ranges::any_of(affecting, [&](const NSString& key) { return affects(object, changed, key, depth + 1); });
}

std::vector<Entry> entriesFor(const NSObject& object, const NSString& key) {
  std::vector<Entry> all;
  {
    Stripe& stripe = stripeOf(object);
    MutexLock lock(stripe.mutex);
    if (const auto found = stripe.entries.find(&object); found != stripe.entries.end()) all = found->second;
  }
  std::erase_if(all, [&](const Entry& e) { return !affects(object, key, e.registration->keys[e.depth]); });
  return all;
}

/// The value at the end of the path from this object on, the null marker where the path breaks off.
Value endOfPath(const NSObject& object, const Registration& registration, std::size_t depth) {
  Value value = object.valueForKey(registration.keys[depth]);
  for (++depth; depth < registration.keys.size(); ++depth) {
    const NSObject* next = value.object();
    if (!next) return Value::null();
    value = next->valueForKey(registration.keys[depth]);
  }
  return value.isAbsent() ? Value::null() : value;
}

/// Adds or removes the entries behind the element `depth` of the path, beginning with what stands there now.
template <class Change>
void forEachBehind(const NSObject& object, const Registration& registration, std::size_t depth, Change&& change) {
  Value value;
  const NSObject* current = &object;
  while (depth + 1 < registration.keys.size()) {
    value = current->valueForKey(registration.keys[depth]);
    current = value.object();
    if (!current) return;
    change(*current, ++depth);
  }
}

void tell(const Registration& registration, const Value& oldValue, const Value& newValue, bool isPrior) {
  if (!registration.isActive.load(std::memory_order_acquire)) return;
  const Ref<NSObject> observer = registration.observerReference.lock();
  const Ref<NSObject> root = registration.root.lock();
  if (!observer || !root) return;
  observer->observeValueForKeyPath(registration.keyPath, *root, KeyValueChange(oldValue, newValue, isPrior),
                                   registration.context);
}

/// A change that has been announced and not yet made, on this thread.
struct PendingChange {
  Ref<NSObject> object;  ///< kept: an observer that lets go of it must not end it in the middle of its setter
  NSString key;
  std::vector<Entry> entries;
  std::vector<Value> oldValues;
};

std::vector<PendingChange>& pendingChanges() {
  thread_local std::vector<PendingChange> changes;
  return changes;
}

/// Raises unless every key along the path exists as far as objects stand there.
void checkPath(const NSObject& object, const Registration& registration) {
  const NSObject* current = &object;
  Value value;
  for (const NSString& key : registration.keys) {
    value = current->valueForKey(key);
    current = value.object();
    if (!current) return;
  }
}

void removeMatching(NSObject& object, const NSObject& observer, const NSString& keyPath, const void* const* context) {
  RegistrationPointer found;
  {
    Stripe& stripe = stripeOf(object);
    MutexLock lock(stripe.mutex);
    if (const auto known = stripe.entries.find(&object); known != stripe.entries.end()) {
      // The latest of equal registrations goes first.
      for (const Entry& entry : known->second) {
        const Registration& r = *entry.registration;
        if (entry.depth == 0 && r.observerAddress == &observer && r.keyPath == keyPath &&
            (!context || r.context == *context) && r.isActive.load(std::memory_order_relaxed)) {
          found = entry.registration;
        }
      }
      if (found) found->isActive.store(false, std::memory_order_release);
    }
  }
  if (!found) {
    detail::raise("NSRangeException", "cannot remove an observer <" + observer.classObject().name().str() +
                                          "> for the key path \"" + keyPath.utf8() + "\" from <" +
                                          object.classObject().name().str() +
                                          "> because it is not registered as an observer");
  }
  forEachBehind(object, *found, 0,
                [&](const NSObject& behind, std::size_t depth) { removeEntry(behind, *found, depth); });
  removeEntry(object, *found, 0);
}

}  // namespace

void NSObject::addObserver(NSObject& observer, const NSString& keyPath, NSKeyValueObservingOptions options,
                           void* context) {
  const auto registration = std::make_shared<Registration>(*this, observer, keyPath, options, context);
  checkPath(*this, *registration);
  addEntry(*this, registration, 0);
  forEachBehind(*this, *registration, 0,
                [&](const NSObject& behind, std::size_t depth) { addEntry(behind, registration, depth); });
  if (registration->wants(NSKeyValueObservingOptionInitial)) {
    const bool wantsNew = registration->wants(NSKeyValueObservingOptionNew);
    tell(*registration, Value(), wantsNew ? endOfPath(*this, *registration, 0) : Value(), false);
  }
}

void NSObject::removeObserver(NSObject& observer, const NSString& keyPath) {
  removeMatching(*this, observer, keyPath, nullptr);
}

void NSObject::removeObserver(NSObject& observer, const NSString& keyPath, void* context) {
  const void* wanted = context;
  removeMatching(*this, observer, keyPath, &wanted);
}

void NSObject::willChangeValueForKey(const NSString& key) {
  PendingChange change{ref(*this), key, entriesFor(*this, key), {}};
  change.oldValues.reserve(change.entries.size());
  for (const auto& [registration, depth] : change.entries) {
    const bool wantsOld = registration->wants(NSKeyValueObservingOptionOld);
    change.oldValues.push_back(wantsOld ? endOfPath(*this, *registration, depth) : Value());
    forEachBehind(*this, *registration, depth,
                  [&, r = registration.get()](const NSObject& behind, std::size_t d) { removeEntry(behind, *r, d); });
  }
  for (std::size_t i = 0; i < change.entries.size(); ++i) {
    const Registration& registration = *change.entries[i].registration;
    if (registration.wants(NSKeyValueObservingOptionPrior)) tell(registration, change.oldValues[i], Value(), true);
  }
  pendingChanges().push_back(std::move(change));
}

void NSObject::didChangeValueForKey(const NSString& key) {
  auto& pending = pendingChanges();
  const auto announced = std::find_if(pending.rbegin(), pending.rend(), [&](const PendingChange& change) {
    return change.object.get() == this && change.key == key;
  });
  if (announced == pending.rend()) return;
  const PendingChange change = std::move(*announced);
  pending.erase(std::next(announced).base());
  for (const auto& [registration, depth] : change.entries) {
    if (!registration->isActive.load(std::memory_order_acquire)) continue;
    forEachBehind(*this, *registration, depth, [&, &r = registration](const NSObject& behind, std::size_t d) {
      addEntry(behind, r, d);
      if (!r->isActive.load(std::memory_order_acquire)) removeEntry(behind, *r, d);
    });
  }
  for (std::size_t i = 0; i < change.entries.size(); ++i) {
    const auto& [registration, depth] = change.entries[i];
    const bool wantsNew = registration->wants(NSKeyValueObservingOptionNew);
    tell(*registration, change.oldValues[i], wantsNew ? endOfPath(*this, *registration, depth) : Value(), false);
  }
}

void NSObject::observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange&, void*) {
  detail::raise("NSInternalInconsistencyException", "an observer of class " + classObject().name().str() +
                                                        " heard of a change of \"" + keyPath.utf8() + "\" of <" +
                                                        object.classObject().name().str() + "> and does not handle it");
}

namespace detail {

void willChangeValue(NSObject& object, const char* key) { object.willChangeValueForKey(NSString::borrowing(key)); }
void didChangeValue(NSObject& object, const char* key) { object.didChangeValueForKey(NSString::borrowing(key)); }

void forgetObservers(NSObject& object) noexcept {
  std::vector<Entry> gone;
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  if (auto node = stripe.entries.extract(&object)) gone = std::move(node.mapped());
}

}  // namespace detail
}  // namespace norvik
