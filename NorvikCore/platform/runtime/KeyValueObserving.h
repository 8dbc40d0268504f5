// NorvikCore/platform/runtime/KeyValueObserving.h - being told when a value at the end of a key path changes.
//
//   class Watcher : public NSObject {
//     NK_OBJECT(Watcher, NSObject)
//     void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange& change, void*)
//     override;
//   };
//   slip->addObserver(*watcher, "employee.name", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld);
//   slip->employee()->setName("Sian");      // watcher hears of it; so it does when slip gets another employee
//   slip->removeObserver(*watcher, "employee.name");
//
// Every element of the path but the last must be an object's key that holds an object or nothing. A path whose first
// key the class does not have, or whose later key the object found there does not have, raises NSUndefinedKeyException
// at once.
//
// Ownership: an observer is not kept. One that goes without being removed is simply not told any more; so is the
//            observer of an object that goes. Removing a registration that does not exist raises NSRangeException.
// Threads:   any. An observer is called on the thread that makes the change, with no lock held. Adding, removing, or
// letting go
//            of the observer or the observed object inside a callback is allowed: who is removed is not called any
//            more, who is added hears of the next change. After removeObserver returns, a call already running on
//            another thread may still finish; the observer lives as long as that call.
// Cost:      none for objects without observers; a registration costs an entry for each element of its path.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/runtime/NSObject.h"
#include "NorvikCore/platform/runtime/Value.h"
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

/// What an observer is told. The values are absent where the options did not ask for them, and the null marker where
/// the path led nowhere.
class NK_EXPORT KeyValueChange {
 public:
  KeyValueChange(Value oldValue, Value newValue, bool isPrior)
      : old_(std::move(oldValue)), new_(std::move(newValue)), isPrior_(isPrior) {}

  [[nodiscard]] const Value& oldValue() const noexcept { return old_; }
  [[nodiscard]] const Value& newValue() const noexcept { return new_; }
  [[nodiscard]] bool isPrior() const noexcept { return isPrior_; }

 private:
  Value old_, new_;
  bool isPrior_;
};

}  // namespace norvik
