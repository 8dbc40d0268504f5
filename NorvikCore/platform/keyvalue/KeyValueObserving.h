// NorvikCore/platform/keyvalue/KeyValueObserving.h - notifications when the value at the end of a key path changes.
//
//   class Watcher : public NSObject {
//     NK_OBJECT(Watcher, NSObject)
//     void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange& change,
//                                 void* context) override;
//   };
//   slip->addObserver(*watcher, "employee.name", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld);
//   slip->employee()->setName("Sian");      // watcher is notified; also when slip gets another employee
//   slip->removeObserver(*watcher, "employee.name");
//
// A path leads from object to object. Values behind a text, a number, a date or a collection are read, but only the
// objects before it are observed. A misspelt path raises NSUndefinedKeyException at once, with the class and the key.
// If an object on the path is absent now, the keys behind it are checked too, as long as each property is declared as a
// Ref to a class. A collection operator must be observed on the object that holds the collection; on the collection
// itself it raises NSInvalidArgumentException.
//
// A change after which the path cannot be read is made nevertheless, and the setter raises the exception from reading.
// A later change can repair the path; its old value is then the null marker.
//
// Ownership: neither the observer nor the observed object is retained. A destroyed observer is not notified any more,
//            even if it was not removed; registrations on an object end when it is destroyed. Removing a registration
//            that does not exist raises NSRangeException; of several equal ones the latest is removed.
// Callbacks: run on the thread that makes the change, with no lock held, in the order in which the observers were
//            added. A callback may add and remove observers, and release its own and other observers and observed
//            objects. A removed observer is not called any more, an added one is notified of the next change, and an
//            object that is being changed lives until the change is complete. All observers of one change receive the
//            same new value. An exception from a callback passes to the caller that makes the change, after the others
//            were notified. An exception from a prior callback passes at once, and then nothing is changed. An
//            exception from the initial callback cancels the registration.
// Threads:   any. After removeObserver returns, a call that already runs on another thread may still finish; observer
//            and object live as long as that call. A change that is made while another thread is adding an observer may
//            not be notified.
// By hand:   each willChangeValueForKey must be followed by its didChangeValueForKey, on the same thread, and the
//            object must be retained in between. A weak property that becomes empty because its object is destroyed
//            notifies no observer.
// Cost:      none for objects without observers. Adding and removing take constant time on average for any number of
//            observers, even if they are equal or were destroyed without being removed; removing without the context is
//            linear in the observers of the object. The registrations of destroyed observers are released at the next
//            change, or at the latest when as many new observers have been added.
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
  NSKeyValueObservingOptionInitial = 4,  ///< one call while adding, with the current value as the new one
  NSKeyValueObservingOptionPrior = 8     ///< an additional call before each change
};
[[nodiscard]] constexpr NSKeyValueObservingOptions operator|(NSKeyValueObservingOptions a,
                                                             NSKeyValueObservingOptions b) noexcept {
  return static_cast<NSKeyValueObservingOptions>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}

enum NSKeyValueChange : std::uint64_t { NSKeyValueChangeSetting = 1 };  ///< a value was set: the only kind

NK_EXPORT extern const NSString NSKeyValueChangeKindKey;                 ///< NSKeyValueChangeSetting
NK_EXPORT extern const NSString NSKeyValueChangeNewKey;                  ///< the new value
NK_EXPORT extern const NSString NSKeyValueChangeOldKey;                  ///< the old value
NK_EXPORT extern const NSString NSKeyValueChangeNotificationIsPriorKey;  ///< true, only in calls before the change

/// The change of which an observer is notified. The values are absent if the options did not request them, and the null
/// marker if the path ended early.
class NK_EXPORT KeyValueChange {
 public:
  KeyValueChange(Value oldValue, Value newValue, bool isPrior)
      : old_(std::move(oldValue)), new_(std::move(newValue)), isPrior_(isPrior) {}

  [[nodiscard]] const Value& oldValue() const noexcept { return old_; }
  [[nodiscard]] const Value& newValue() const noexcept { return new_; }
  [[nodiscard]] bool isPrior() const noexcept { return isPrior_; }

  /// The same as a dictionary with the keys above, without entries for absent values.
  [[nodiscard]] Ref<NSDictionary> dictionary() const;
  /// Calls visit(key, value) for each entry of that dictionary, in its order.
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
