#include "NorvikCore/platform/keyvalue/internal/ObserverList.h"

#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"

#include <algorithm>
#include <utility>

namespace norvik::detail {

void ObserverList::add(Entry entry, std::vector<Ref<Registration>>* gone) {
  const bool isFull = entries_.size() >= std::max<std::size_t>(greatestUnindexed, roomFor_);
  if (isFull && gone && canLoseObservers_) takeGone(*gone);
  options_ |= entry.registration->options_;
  hasPaths_ = hasPaths_ || !entry.registration->isLast(entry.depth);
  canLoseObservers_ = canLoseObservers_ || entry.registration->canLoseObserver();
  if (isFull) closeGaps();
  if (entry.depth == 0) entry.registration->position_ = static_cast<std::uint32_t>(entries_.size());
  entries_.push_back(std::move(entry));
  ++count_;
  if (!slots_.empty()) enter(entries_.size() - 1);
}

/// Leaves gaps, of which the index is not informed.
void ObserverList::takeGone(std::vector<Ref<Registration>>& gone) {
  for (Entry& entry : entries_) {
    if (!entry.registration || entry.depth != 0 || !entry.registration->isObserverGone()) continue;
    gone.push_back(std::move(entry.registration));
    --count_;
  }
}

Ref<Registration> ObserverList::removeRoot(const Registration& registration) {
  const std::size_t position = registration.position_;
  const bool isPresent = position < entries_.size() && entries_[position].registration.get() == &registration &&
                         entries_[position].depth == 0;
  return isPresent ? takeOut(position) : nullptr;
}

Ref<Registration> ObserverList::takeOut(std::size_t position) {
  Ref<Registration> removed = std::move(entries_[position].registration);
  --count_;
  if (count_ == 0) {
    entries_.clear();
    slots_.clear();
    older_.clear();
    options_ = 0;
    hasPaths_ = canLoseObservers_ = false;
  } else if (position + 1 == entries_.size() && slots_.empty()) {
    entries_.pop_back();
  } else if (entries_.size() <= greatestUnindexed || entries_.size() > 2 * count_ + greatestUnindexed) {
    closeGaps();
  } else if (!older_.empty()) {
    unlink(position);
  }
  return removed;
}

/// The slot that holds this hash, or the free slot where it belongs.
std::uint32_t& ObserverList::slotOf(std::uint32_t hash) noexcept {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (slots_[slot] != 0 && entries_[slots_[slot] - 1].hash != hash) slot = (slot + 1) & mask;
  return slots_[slot];
}

/// Unlinks a removed entry, so that removing the latest entries of a hash one by one does not pass over their gaps.
void ObserverList::unlink(std::size_t position) {
  const auto removed = static_cast<std::uint32_t>(position + 1);
  std::uint32_t& latest = slotOf(entries_[position].hash);
  if (latest == removed) {
    // If it is the only place of its hash, it stays in the slot, because searches for later slots pass over it.
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

/// Closes the gaps, and gives the entries as much room again before it is called for the next time.
void ObserverList::closeGaps() {
  if (count_ != entries_.size()) {
    std::erase_if(entries_, [](const Entry& e) { return !e.registration; });
    for (std::size_t position = 0; position < entries_.size(); ++position) {
      if (entries_[position].depth == 0)
        entries_[position].registration->position_ = static_cast<std::uint32_t>(position);
    }
  }
  roomFor_ = static_cast<std::uint32_t>(2 * entries_.size());
  if (!slots_.empty()) makeIndex();
}

void ObserverList::makeIndex() {
  slots_.clear();
  older_.clear();
  if (entries_.size() <= greatestUnindexed) return;
  std::size_t size = 4 * greatestUnindexed;
  while (size < std::max<std::size_t>(entries_.size(), roomFor_) * 2) size *= 2;
  slots_.resize(size);
  for (std::size_t position = 0; position < entries_.size(); ++position) {
    if (entries_[position].registration) enter(position);
  }
}

Ref<ObserverList> ObserverList::copy() const {
  auto same = make<ObserverList>();
  same->entries_ = entries_;
  same->slots_ = slots_;
  same->count_ = count_;
  same->options_ = options_;
  same->hasPaths_ = hasPaths_;
  same->canLoseObservers_ = canLoseObservers_;
  same->closeGaps();
  return same;
}

namespace {

/// Locks the list of a record.
class NK_SCOPED_CAPABILITY LockedList {
 public:
  explicit LockedList(SideRecord& record) noexcept NK_ACQUIRE(record.observers)
      : record_(record), list_(static_cast<ObserverList*>(record.observers.lock())) {}
  ~LockedList() NK_RELEASE() { record_.observers.unlock(list_); }
  LockedList(const LockedList&) = delete;
  LockedList& operator=(const LockedList&) = delete;

  /// The list, ready to be modified: a new one if there was none, and a copy if a change that is being announced uses
  /// it.
  [[nodiscard]] ObserverList& changeable() {
    if (!list_) {
      setList(make<ObserverList>());
    } else if (record_.passList(*list_) || !LentPointer::isUnshared(*list_)) {
      ObserverList& held = *list_;
      setList(list_->copy());
      LentPointer::drop(held);
    }
    return *list_;
  }
  /// Calls remove(list). The caller must release the result after the lock.
  template <class Remove>
  Ref<Registration> removeFrom(const NSObject& object, Remove&& remove) {
    if (!list_) return nullptr;
    ObserverList& changed = changeable();
    Ref<Registration> removed = remove(changed);
    if (removed && changed.count() == 0) ObjectAccess::setObserved(object, false);
    return removed;
  }

 private:
  void setList(Ref<ObserverList> list) noexcept {
    list_ = list.take();
    LentPointer::taken(*list_);
  }

  SideRecord& record_;
  ObserverList* list_;
};

/// Calls remove(list) on the object's list.
template <class Remove>
Ref<Registration> removeFrom(const NSObject& object, Remove&& remove) {
  SideRecord* record = SideRecord::find(object);
  if (!record) return nullptr;
  LockedList list(*record);
  return list.removeFrom(object, remove);
}

}  // namespace

Ref<const ObserverList> observersOf(const NSObject& object) {
  if (!object.isObserved()) return nullptr;
  return Ref<const ObserverList>::adopt(static_cast<ObserverList*>(SideRecord::find(object)->observers.borrow()));
}

namespace {

bool attachUnder(const ObservedKey* key, NSObject& object, Ref<Registration> registration, std::size_t depth) {
  if (ObjectAccess::isDying(object)) return false;
  const std::uint32_t hash = registration->hash32();
  ObserverList::Entry entry{std::move(registration), key, static_cast<std::uint32_t>(depth), hash};
  std::vector<Ref<Registration>> gone;
  {
    LockedList list(SideRecord::findOrMake(object));
    if (!entry.registration->isActive()) return false;
    // An entry at a later element is added under the lock of its registration, and there no other registration may end.
    list.changeable().add(std::move(entry), depth == 0 ? &gone : nullptr);
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
    if (depth == 0) return list.removeRoot(registration);
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

Ref<Registration> endRegistration(NSObject* object, Registration& registration) {
  Ref<Registration> removed;
  if (SideRecord* record = object ? SideRecord::find(*object) : nullptr) {
    LockedList locked(*record);
    registration.stop();
    removed = locked.removeFrom(*object, [&](ObserverList& list) { return list.removeRoot(registration); });
  } else {
    registration.stop();
  }
  registration.leavePath();
  return removed;
}

void endObserving(NSObject& object, NSObject* observers) noexcept {
  const auto list = Ref<ObserverList>::adopt(static_cast<ObserverList*>(observers));
  for (const ObserverList::Entry& entry : list->entries()) {
    if (entry.registration) entry.registration->objectGoes(object, entry.depth);
  }
}

}  // namespace norvik::detail
