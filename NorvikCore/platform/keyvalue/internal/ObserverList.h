// NorvikCore/platform/keyvalue/internal/ObserverList.h - who observes one object.
//
// A list is shared with the changes that are being announced and is copied before it changes under them: so announcing
// takes one count whatever the number of observers, and adding and removing meanwhile does no harm.
#pragma once

#include "NorvikCore/platform/keyvalue/internal/Registration.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <vector>

namespace norvik::detail {

class ObserverList final : public NSObject {
 public:
  /// A registration at one element of its path; without one it is the gap that a removed entry left.
  struct Entry {
    Ref<Registration> registration;
    const std::vector<NSString>* affecting;  ///< other keys of the object whose change is a change of this one, or null
    std::uint32_t depth;                     ///< which element
    std::uint32_t hash;                      ///< of the registration, also when that was removed
  };

  /// In the order in which they were added.
  [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return entries_; }
  /// Gaps do not count.
  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// Some entry may want that option, and some may lead on to further objects: what no entry does need not be looked
  /// for.
  [[nodiscard]] bool wants(NSKeyValueObservingOptions option) const noexcept { return (options_ & option) != 0; }
  [[nodiscard]] bool hasPaths() const noexcept { return hasPaths_; }

  /// Now and then it also takes out the registrations on the object itself whose observers are gone, and hands them to
  /// `gone`, if there is one: a list whose observers come and go does not grow.
  void add(Entry entry, std::vector<Ref<Registration>>* gone);
  /// Takes out the latest entry with that hash for which `isWanted(entry)` is true.
  template <class IsWanted>
  Ref<Registration> remove(std::uint32_t hash, IsWanted&& isWanted);
  /// Takes out the latest entry for which `isWanted(entry)` is true, whatever its hash, in linear time.
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
  void rebuild();

  std::vector<Entry> entries_;
  // A place is 0 for none, or a position + 1.
  std::vector<std::uint32_t> slots_;  ///< the latest place of each hash; no slots while the entries are few
  std::vector<std::uint32_t> older_;  ///< for each place the next older one of its hash; empty if all hashes differ
  std::uint32_t count_ = 0;
  std::uint32_t options_ = 0;  ///< of all entries there were since the list was empty
  bool hasPaths_ = false;
};

template <class IsWanted>
Ref<Registration> ObserverList::remove(std::uint32_t hash, IsWanted&& isWanted) {
  const auto isMatch = [&](const Entry& e) { return e.hash == hash && e.registration && isWanted(e); };
  if (slots_.empty()) return removeAny(isMatch);
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

/// The observers of an object, kept; empty where there are none.
[[nodiscard]] Ref<const ObserverList> observersOf(const NSObject& object);

/// Makes a registration hear of changes of that object under the key at `depth` of its path, and no longer. Refused by
/// an object that goes, and to a registration that has ended.
bool attach(NSObject& object, Ref<Registration> registration, std::size_t depth);
/// Attaches one of a single property without an initial call: nothing of others is called, and nothing is to check.
/// False, and nothing is done, where it is not so simple.
bool attachPlain(NSObject& object, Ref<Registration>& registration);
void detach(const NSObject* object, const Registration& registration, std::size_t depth);
/// Ends the latest registration made on the object itself for this observer, path and context (any where that is null),
/// and takes it from the object's list. Empty where there is none.
[[nodiscard]] Ref<Registration> takeRegistration(const NSObject& object, const NSObject& observer,
                                                 const NSString& keyPath, const void* const* context);

/// Checks the path, attaches the registration to all of it, and makes the initial call.
void observe(NSObject& object, Ref<Registration> registration);
/// Ends a registration wherever it stands, also one that is being made: it will not be attached any more. `object` is
/// the one it was made on, or null where that is gone.
void endRegistration(NSObject* object, Registration& registration);

}  // namespace norvik::detail
