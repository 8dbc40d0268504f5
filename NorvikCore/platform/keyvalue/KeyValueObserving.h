// NorvikCore/platform/keyvalue/KeyValueObserving.h - being told when a value at the end of a key path changes.
//
//   class Watcher : public NSObject {
//     NK_OBJECT(Watcher, NSObject)
//     void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange& change,
//                                 void* context) override;
//   };
//   slip->addObserver(*watcher, "employee.name", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld);
//   slip->employee()->setName("Sian");      // watcher hears of it; so it does when slip gets another employee
//   slip->removeObserver(*watcher, "employee.name");
//
// A path leads from object to object; what stands behind a text, a number, a date or a collection is read, but only the
// objects before it are watched. A misspelt path raises NSUndefinedKeyException at once, with the class and the key:
// also where the path breaks off at present, as far as properties are stated as a Ref to a class. A collection operator
// is observed on the object that holds the collection: on the collection itself it raises NSInvalidArgumentException.
//
// A change after which the path cannot be read is made, and the setter raises what reading raised. The next change can
// mend it: the value before is the null marker then.
//
// Ownership: an observer is not kept, and neither is the observed object. An observer that goes without being
//            removed is not told any more; registrations on an object end when it goes.
//            Removing one that does not exist raises NSRangeException;
//            of equal ones the latest is removed.
// Callbacks: run on the thread that makes the change, with no lock held, in the order in which the observers were
//            added. A callback may add and remove observers and let go of the observer and of the observed object,
//            its own and others: who is removed is not called any more, who is added hears of the next change, and an
//            object in the middle of a change lives until the change is complete. All observers of one change get the
//            same new value. What a callback raises passes to who makes the change, after the others were told; from a
//            prior callback at once, and then nothing is changed. What the initial callback raises withdraws the
//            registration.
// Threads:   any. After removeObserver returns, a call that already runs on another thread may still finish; observer
//            and object live as long as that call. A change made while an observer is being added on another thread may
//            go unheard.
// By hand:   every willChangeValueForKey is followed by its didChangeValueForKey, on the same thread, and the object is
//            kept in between. A weak property that reads empty because its object went announces nothing.
// Cost:      none for objects without observers. Adding and removing take constant time on average whatever the number
//            of observers, also if they are equal or were destroyed without being removed; removing without saying the
//            context is linear in the observers of the object. What destroyed observers left is released at the next
//            change or, at the latest, once as many observers again were added.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstdint>

namespace norvik {

enum NSKeyValueObservingOptions : std::uint64_t {
  NSKeyValueObservingOptionNew = 1,      ///< the change carries the new value
  NSKeyValueObservingOptionOld = 2,      ///< the change carries the old value
  NSKeyValueObservingOptionInitial = 4,  ///< one call at once, while adding, with the present value as the new one
  NSKeyValueObservingOptionPrior = 8     ///< one more call before each change
};
[[nodiscard]] constexpr NSKeyValueObservingOptions operator|(NSKeyValueObservingOptions a,
                                                             NSKeyValueObservingOptions b) noexcept {
  return static_cast<NSKeyValueObservingOptions>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}

enum NSKeyValueChange : std::uint64_t { NSKeyValueChangeSetting = 1 };  ///< a value was set: the one kind there is

NK_EXPORT extern const NSString NSKeyValueChangeKindKey;                 ///< NSKeyValueChangeSetting
NK_EXPORT extern const NSString NSKeyValueChangeNewKey;                  ///< the new value
NK_EXPORT extern const NSString NSKeyValueChangeOldKey;                  ///< the old value
NK_EXPORT extern const NSString NSKeyValueChangeNotificationIsPriorKey;  ///< true, in calls before the change only

/// What an observer is told. The values are absent where the options did not ask for them, and the null marker where
/// the path led nowhere.
class NK_EXPORT KeyValueChange {
 public:
  KeyValueChange(Value oldValue, Value newValue, bool isPrior)
      : old_(std::move(oldValue)), new_(std::move(newValue)), isPrior_(isPrior) {}

  [[nodiscard]] const Value& oldValue() const noexcept { return old_; }
  [[nodiscard]] const Value& newValue() const noexcept { return new_; }
  [[nodiscard]] bool isPrior() const noexcept { return isPrior_; }

  /// The same as a dictionary under the keys above, without entries for what is absent.
  [[nodiscard]] Ref<NSDictionary> dictionary() const;
  /// visit(key, value) for each entry of that dictionary, in its order.
  template <class Visit>
  void forEachEntry(Visit&& visit) const {
    visit(NSKeyValueChangeKindKey, Value(static_cast<std::uint64_t>(NSKeyValueChangeSetting)));
    if (!new_.isAbsent()) visit(NSKeyValueChangeNewKey, new_);
    if (!old_.isAbsent()) visit(NSKeyValueChangeOldKey, old_);
    if (isPrior_) visit(NSKeyValueChangeNotificationIsPriorKey, Value(true));
  }

 private:
  Value old_, new_;
  bool isPrior_;
};

}  // namespace norvik
