#include "NorvikCore/platform/runtime/internal/ObserverList.h"

#include "NorvikCore/platform/runtime/Class.h"
#include "NorvikCore/platform/runtime/internal/ObjectAccess.h"
#include "NorvikCore/platform/runtime/internal/ObservedKey.h"
#include "NorvikCore/platform/runtime/internal/PointerTable.h"
#include "NorvikCore/platform/runtime/internal/WordMutex.h"

#include <algorithm>
#include <array>
#include <utility>

namespace norvik::detail {

void ObserverList::add(Entry entry) {
  options_ |= entry.registration->options();
  hasPaths_ = hasPaths_ || !entry.registration->isLast(entry.depth);
  entries_.push_back(std::move(entry));
  ++count_;
  if (entries_.size() <= greatestUnindexed && slots_.empty()) return;
  if (entries_.size() * 2 > slots_.size()) {
    rebuild();
  } else {
    enter(entries_.size() - 1);
  }
}

Ref<Registration> ObserverList::removeAt(std::size_t position) {
  Ref<Registration> removed = std::move(entries_[position].registration);
  --count_;
  if (count_ == 0) {
    entries_.clear();
    slots_.clear();
    options_ = 0;
    hasPaths_ = false;
  } else if (slots_.empty()) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
  } else if (entries_.size() > 2 * count_ + greatestUnindexed) {
    rebuild();
  }
  return removed;
}

void ObserverList::enter(std::size_t position) {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = entries_[position].hash & mask;
  while (slots_[slot] != 0) slot = (slot + 1) & mask;
  slots_[slot] = static_cast<std::uint32_t>(position + 1);
}

/// Closes the gaps and makes the index anew, with room for as many entries again.
void ObserverList::rebuild() {
  std::erase_if(entries_, [](const Entry& e) { return !e.registration; });
  slots_.clear();
  if (entries_.size() <= greatestUnindexed) return;
  std::size_t size = 4 * greatestUnindexed;
  while (size < entries_.size() * 4) size *= 2;
  slots_.resize(size);
  for (std::size_t position = 0; position < entries_.size(); ++position) enter(position);
}

Ref<ObserverList> ObserverList::copy() const {
  auto same = make<ObserverList>();
  same->entries_ = entries_;
  same->count_ = count_;
  same->options_ = options_;
  same->hasPaths_ = hasPaths_;
  same->rebuild();
  return same;
}

namespace {

/// The lists of some objects. An object that was ever observed keeps its list, perhaps empty, until it goes.
struct Stripe {
  WordMutex mutex;
  PointerTable<Ref<ObserverList>> lists NK_GUARDED_BY(mutex);
};

Stripe& stripeOf(const NSObject* object) {
  static auto& stripes = *new std::array<Stripe, 64>;
  return stripes[(reinterpret_cast<std::uintptr_t>(object) >> 5) % stripes.size()];
}

std::uint32_t hashOf(const NSObject* observer, const void* context) noexcept {
  const std::uintptr_t both =
      reinterpret_cast<std::uintptr_t>(observer) + 3 * reinterpret_cast<std::uintptr_t>(context);
  return static_cast<std::uint32_t>((both * 0x9E3779B97F4A7C15u) >> 32);
}

/// The list as one that may be changed: a copy, where a change that is being announced holds it.
ObserverList& changeable(Ref<ObserverList>& list) {
  if (!list) {
    list = make<ObserverList>();
  } else if (ObjectAccess::count(*list).loadAcquire() != 1) {
    list = list->copy();
  }
  return *list;
}

/// remove(list) on the object's list; what it gives goes after the lock.
template <class Remove>
Ref<Registration> removeFrom(Stripe& stripe, const NSObject& object, Remove&& remove) NK_REQUIRES(stripe.mutex) {
  Ref<ObserverList>* list = stripe.lists.find(&object);
  if (!list) return nullptr;
  ObserverList& changed = changeable(*list);
  Ref<Registration> removed = remove(changed);
  if (removed && changed.count() == 0) ObjectAccess::setObserved(object, false);
  return removed;
}
template <class Remove>
Ref<Registration> removeFrom(const NSObject& object, Remove&& remove) {
  Stripe& stripe = stripeOf(&object);
  WordLock lock(stripe.mutex);
  return removeFrom(stripe, object, remove);
}

}  // namespace

Ref<const ObserverList> observersOf(const NSObject& object) {
  if (!object.isObserved()) return nullptr;
  Stripe& stripe = stripeOf(&object);
  WordLock lock(stripe.mutex);
  const Ref<ObserverList>* list = stripe.lists.find(&object);
  return list ? *list : nullptr;
}

namespace {

bool attachUnder(const ObservedKey* key, NSObject& object, Ref<Registration> registration, std::size_t depth) {
  if (ObjectAccess::isDying(object)) return false;
  const auto* affecting = key && !key->affecting.empty() ? &key->affecting : nullptr;
  const std::uint32_t hash = hashOf(registration->observerAddress(), registration->context());
  ObserverList::Entry entry{std::move(registration), affecting, static_cast<std::uint32_t>(depth), hash};
  Stripe& stripe = stripeOf(&object);
  WordLock lock(stripe.mutex);
  if (!entry.registration->isActive()) return false;
  changeable(stripe.lists[&object]).add(std::move(entry));
  if (!object.isObserved()) ObjectAccess::setObserved(object, true);
  return true;
}

}  // namespace

bool attach(NSObject& object, Ref<Registration> registration, std::size_t depth) {
  const ObservedKey* key = observedKey(object.classObject(), registration->key(depth));
  return attachUnder(key, object, std::move(registration), depth);
}

bool attachPlain(NSObject& object, Ref<Registration>& registration) {
  if (registration->length() != 1 || registration->wants(NSKeyValueObservingOptionInitial)) return false;
  const ObservedKey* key = observedKey(object.classObject(), registration->keyPath());
  if (!key || !key->isProperty) return false;
  attachUnder(key, object, std::move(registration), 0);
  return true;
}

void detach(const NSObject* object, const Registration& registration, std::size_t depth) {
  const std::uint32_t hash = hashOf(registration.observerAddress(), registration.context());
  removeFrom(*object, [&](ObserverList& list) {
    return list.remove(
        hash, [&](const ObserverList::Entry& e) { return e.registration.get() == &registration && e.depth == depth; });
  });
}

Ref<Registration> takeRegistration(const NSObject& object, const NSObject& observer, const NSString& keyPath,
                                   const void* const* context) {
  const auto isWanted = [&](const ObserverList::Entry& e) {
    const Registration& r = *e.registration;
    return e.depth == 0 && r.observerAddress() == &observer && (!context || r.context() == *context) &&
           (r.keyPath().isIdenticalTo(keyPath) || r.keyPath() == keyPath) && r.isActive();
  };
  Ref<Registration> taken = removeFrom(object, [&](ObserverList& list) {
    return context ? list.remove(hashOf(&observer, *context), isWanted) : list.removeAny(isWanted);
  });
  if (taken) taken->stop();
  return taken;
}

void endRegistration(NSObject* object, Registration& registration) {
  Ref<Registration> removed;  // goes after the lock
  if (object) {
    const std::uint32_t hash = hashOf(registration.observerAddress(), registration.context());
    Stripe& stripe = stripeOf(object);
    WordLock lock(stripe.mutex);
    registration.stop();
    removed = removeFrom(stripe, *object, [&](ObserverList& list) {
      return list.remove(
          hash, [&](const ObserverList::Entry& e) { return e.registration.get() == &registration && e.depth == 0; });
    });
  } else {
    registration.stop();
  }
  registration.leavePath();
}

void forgetObservers(NSObject& object) noexcept {
  Ref<ObserverList> list;
  {
    Stripe& stripe = stripeOf(&object);
    WordLock lock(stripe.mutex);
    list = stripe.lists.take(&object);
  }
  if (!list) return;
  for (const ObserverList::Entry& entry : list->entries()) {
    if (entry.registration) entry.registration->objectGoes(object, entry.depth);
  }
}

}  // namespace norvik::detail
