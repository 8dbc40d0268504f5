// NorvikCore/platform/keyvalue/internal/ObserverList.h - the observers of one object.
//
// Changes that are being announced share the list, and it is copied before it is modified meanwhile. So announcing
// takes one reference count for any number of observers, and observers can be added and removed meanwhile.
#pragma once

#include "NorvikCore/platform/keyvalue/internal/ObservedKey.h"
#include "NorvikCore/platform/keyvalue/internal/Registration.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <vector>

namespace norvik::detail {

class ObserverList final : public NSObject {
 public:
  /// A registration at one element of its path. Without a registration it is the gap of a removed entry.
  struct Entry {
    Ref<Registration> registration;
    const ObservedKey* key;  ///< what the object's class declares about the key of this element, or null
    std::uint32_t depth;     ///< the index of the element in the path
    std::uint32_t hash;      ///< of the registration, even if that was removed
  };

  /// In the order in which they were added.
  [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return entries_; }
  /// Without gaps.
  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// True if some entry may request that option; hasPaths() if some entry may lead to further objects. If false, the
  /// caller can skip the search.
  [[nodiscard]] bool wants(NSKeyValueObservingOptions option) const noexcept { return (options_ & option) != 0; }
  [[nodiscard]] bool hasPaths() const noexcept { return hasPaths_; }

  /// The entry if there is only one, and its observer needs nothing but a call after the change of the object itself.
  [[nodiscard]] const Entry* onlyPlain() const noexcept {
    constexpr auto further =
        NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld | NSKeyValueObservingOptionPrior;
    const bool isOnly = entries_.size() == 1 && entries_[0].depth == 0 && count_ == 1;
    return isOnly && !hasPaths_ && (options_ & further) == 0 ? &entries_[0] : nullptr;
  }

  /// If `gone` is given, it sometimes also removes the registrations on the object itself whose observers are
  /// destroyed, and appends them to `gone`. So a list with short-lived observers does not grow.
  void add(Entry entry, std::vector<Ref<Registration>>* gone);
  /// Removes the entry of the registration at the first element of its path, in constant time. Empty if there is none.
  Ref<Registration> removeRoot(const Registration& registration);
  /// Removes the latest entry with that hash for which `isWanted(entry)` is true.
  template <class IsWanted>
  Ref<Registration> remove(std::uint32_t hash, IsWanted&& isWanted);
  /// Removes the latest entry for which `isWanted(entry)` is true, with any hash, in linear time.
  template <class IsWanted>
  Ref<Registration> removeAny(IsWanted&& isWanted);
  /// The same entries without the gaps.
  [[nodiscard]] Ref<ObserverList> copy() const;

 private:
  static constexpr std::size_t greatestUnindexed = 8;

  [[nodiscard]] std::uint32_t& slotOf(std::uint32_t hash) noexcept;
  [[nodiscard]] std::uint32_t older(std::uint32_t place) const noexcept {
    return older_.empty() ? 0 : older_[place - 1];
  }
  void takeGone(std::vector<Ref<Registration>>& gone);
  Ref<Registration> takeOut(std::size_t position);
  void unlink(std::size_t position);
  void enter(std::size_t position);
  void closeGaps();
  void makeIndex();

  std::vector<Entry> entries_;
  // A place is a position + 1, or 0 for none.
  std::vector<std::uint32_t> slots_;  ///< the latest place of each hash; empty before the first search of many entries
  std::vector<std::uint32_t> older_;  ///< for each place the next older one of its hash; empty if all hashes differ
  std::uint32_t count_ = 0;
  std::uint32_t roomFor_ = 0;  ///< number of entries at which gaps are closed
  std::uint32_t options_ = 0;  ///< of all entries since the list was last empty
  bool hasPaths_ = false;
  bool canLoseObservers_ = false;  ///< some observer may be destroyed without being removed
};

template <class IsWanted>
Ref<Registration> ObserverList::remove(std::uint32_t hash, IsWanted&& isWanted) {
  const auto isMatch = [&](const Entry& e) { return e.hash == hash && e.registration && isWanted(e); };
  if (entries_.size() <= greatestUnindexed) return removeAny(isMatch);
  if (slots_.empty()) makeIndex();
  for (std::uint32_t place = slotOf(hash); place != 0; place = older(place)) {
    if (isMatch(entries_[place - 1])) return takeOut(place - 1);
  }
  return nullptr;
}

template <class IsWanted>
Ref<Registration> ObserverList::removeAny(IsWanted&& isWanted) {
  for (std::size_t position = entries_.size(); position-- > 0;) {
    if (entries_[position].registration && isWanted(entries_[position])) return takeOut(position);
  }
  return nullptr;
}

/// The observers of an object, retained; empty if there are none.
[[nodiscard]] Ref<const ObserverList> observersOf(const NSObject& object);

/// Adds a registration to the object's list under the key at `depth` of its path; detach() removes it. False, without
/// effect, if the object is being destroyed or the registration has ended.
bool attach(NSObject& object, Ref<Registration> registration, std::size_t depth);
/// Attaches a registration for a single property without an initial call, which needs no check and calls no user code.
/// False, without effect, for any other registration.
bool attachPlain(NSObject& object, Ref<Registration>& registration);
void detach(const NSObject* object, const Registration& registration, std::size_t depth);
/// Ends the latest registration that was made on the object itself for this observer, path and context (any context if
/// null), and removes it from the object's list. Empty if there is none.
[[nodiscard]] Ref<Registration> takeRegistration(const NSObject& object, const NSObject& observer,
                                                 const NSString& keyPath, const void* const* context);

/// Checks the path, attaches the registration to all of it, and makes the initial call.
void observe(NSObject& object, Ref<Registration> registration);
/// Ends a registration and removes it from all lists, even one that is being made: it will not be attached any more.
/// `object` is the object on which it was made, or null if that is destroyed. Returns the Ref that the list of the
/// object had; empty if it had none.
Ref<Registration> endRegistration(NSObject* object, Registration& registration);

}  // namespace norvik::detail
