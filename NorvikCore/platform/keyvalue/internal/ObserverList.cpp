#include "NorvikCore/platform/keyvalue/internal/ObserverList.h"

#include "NorvikCore/platform/keyvalue/internal/ObservedKey.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/PointerTable.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <algorithm>
#include <array>
#include <utility>

namespace norvik::detail {

void ObserverList::add(Entry entry, std::vector<Ref<Registration>>* gone) {
  const bool isFull = entries_.size() >= std::max(greatestUnindexed, slots_.size() / 2);
  if (isFull && gone) takeGone(*gone);
  options_ |= static_cast<std::uint32_t>(entry.registration->options());
  hasPaths_ = hasPaths_ || !entry.registration->isLast(entry.depth);
  entries_.push_back(std::move(entry));
  ++count_;
  if (isFull) {
    rebuild();
  } else if (!slots_.empty()) {
    enter(entries_.size() - 1);
  }
}

/// Leaves gaps that the index does not know.
void ObserverList::takeGone(std::vector<Ref<Registration>>& gone) {
  for (Entry& entry : entries_) {
    if (!entry.registration || entry.depth != 0 || !entry.registration->isObserverGone()) continue;
    gone.push_back(std::move(entry.registration));
    --count_;
  }
}

Ref<Registration> ObserverList::takeOut(std::size_t position) {
  Ref<Registration> removed = std::move(entries_[position].registration);
  --count_;
  if (count_ == 0) {
    entries_.clear();
    slots_.clear();
    older_.clear();
    options_ = 0;
    hasPaths_ = false;
  } else if (slots_.empty()) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
  } else if (entries_.size() > 2 * count_ + greatestUnindexed) {
    rebuild();
  } else if (!older_.empty()) {
    unlink(position);
  }
  return removed;
}

/// The slot that holds this hash, or the free one where it belongs.
std::uint32_t& ObserverList::slotOf(std::uint32_t hash) noexcept {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (slots_[slot] != 0 && entries_[slots_[slot] - 1].hash != hash) slot = (slot + 1) & mask;
  return slots_[slot];
}

/// Removing the latest entries of a hash one by one must not pass over the gaps of those removed before.
void ObserverList::unlink(std::size_t position) {
  const auto removed = static_cast<std::uint32_t>(position + 1);
  std::uint32_t& latest = slotOf(entries_[position].hash);
  if (latest == removed) {
    // The only place of its hash stays in the slot, because later slots are found past it.
    if (older_[position] != 0) latest = older_[position];
    return;
  }
  std::uint32_t newer = latest;
  while (older_[newer - 1] != removed) newer = older_[newer - 1];
  older_[newer - 1] = older_[position];
}

void ObserverList::enter(std::size_t position) {
  std::uint32_t& latest = slotOf(entries_[position].hash);
  const bool isGap = latest != 0 && !entries_[latest - 1].registration;
  const std::uint32_t next = isGap ? older(latest) : latest;
  if (next != 0 || !older_.empty()) {
    older_.resize(entries_.size());
    older_[position] = next;
  }
  latest = static_cast<std::uint32_t>(position + 1);
}

/// Closes the gaps and makes the index anew, with room for as many entries again.
void ObserverList::rebuild() {
  std::erase_if(entries_, [](const Entry& e) { return !e.registration; });
  slots_.clear();
  older_.clear();
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
  const std::uint32_t hash = registration->hash32();
  ObserverList::Entry entry{std::move(registration), affecting, static_cast<std::uint32_t>(depth), hash};
  std::vector<Ref<Registration>> gone;
  {
    Stripe& stripe = stripeOf(&object);
    WordLock lock(stripe.mutex);
    if (!entry.registration->isActive()) return false;
    // An entry further along a path is added under the lock of its registration, where no other one can be ended.
    changeable(stripe.lists[&object]).add(std::move(entry), depth == 0 ? &gone : nullptr);
    if (!object.isObserved()) ObjectAccess::setObserved(object, true);
  }
  for (const Ref<Registration>& registrationLeft : gone) {
    registrationLeft->stop();
    registrationLeft->leavePath();
  }
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
  removeFrom(*object, [&](ObserverList& list) {
    return list.remove(registration.hash32(), [&](const ObserverList::Entry& e) {
      return e.registration.get() == &registration && e.depth == depth;
    });
  });
}

Ref<Registration> takeRegistration(const NSObject& object, const NSObject& observer, const NSString& keyPath,
                                   const void* const* context) {
  const auto isWanted = [&](const ObserverList::Entry& e) {
    const Registration& r = *e.registration;
    return e.depth == 0 && r.isOf(observer) && (!context || r.context() == *context) &&
           (r.keyPath().isIdenticalTo(keyPath) || r.keyPath() == keyPath) && r.isActive();
  };
  Ref<Registration> taken = removeFrom(object, [&](ObserverList& list) {
    return context ? list.remove(Registration::hashOf(observer, keyPath, *context), isWanted)
                   : list.removeAny(isWanted);
  });
  if (taken) taken->stop();
  return taken;
}

void endRegistration(NSObject* object, Registration& registration) {
  Ref<Registration> removed;  // goes after the lock
  if (object) {
    Stripe& stripe = stripeOf(object);
    WordLock lock(stripe.mutex);
    registration.stop();
    removed = removeFrom(stripe, *object, [&](ObserverList& list) {
      return list.remove(registration.hash32(), [&](const ObserverList::Entry& e) {
        return e.registration.get() == &registration && e.depth == 0;
      });
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
