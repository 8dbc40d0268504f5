// NorvikCore/platform/object/internal/ObjectAccess.h - access to the private members of NSObject, for the runtime.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

namespace norvik::detail {

struct ObjectAccess {
  /// The count of an object that is being destroyed. It is so far from zero that Refs taken meanwhile never reach zero.
  static constexpr std::uint32_t dyingCount = 0x80000000;

  static AtomicWord<std::uint32_t>& count(const NSObject& object) noexcept { return object.count_; }
  /// Retains the object, unless its count has reached zero. The caller must ensure that its memory still exists.
  static bool retainUnlessGoing(const NSObject& object) noexcept {
    std::uint32_t seen = object.count_.loadRelaxed();
    do {
      if (seen == 0 || seen >= dyingCount / 2) return false;
    } while (!object.count_.compareExchange(seen, seen + 1));
    return true;
  }
  /// True if the caller has the only Ref, and the object has no Weak, observer or association.
  static bool isUnshared(const NSObject& object) noexcept {
    return object.count_.loadAcquire() == 1 && object.flags_.loadAcquire() == 0;
  }
  /// Releases two counts of the caller.
  static void releaseTwice(const NSObject& object) noexcept {
    // As in release(): no other thread can retain an object that only the caller uses.
    if (object.count_.loadAcquire() == 2 && object.flags_.loadAcquire() == 0) return destroy(&object);
    release(&object);
    release(&object);
  }
  static bool initialise(NSObject& object) { return object.init(); }
  /// Destroys an object without a side record, which no other thread can use.
  [[gnu::noinline]] static void destroy(const NSObject* object) noexcept;
  /// Releases an object whose count was seen to be 1. False if it has more counts meanwhile.
  [[gnu::noinline]] static bool releaseLast(const NSObject* object) noexcept;

  /// For an object with a side record whose list of observers is locked. No other thread changes the flags then,
  /// because the number of the record never changes: a plain store is sufficient.
  static void setObserved(const NSObject& object, bool observed) noexcept {
    const std::uint32_t others = object.flags_.loadRelaxed() & ~NSObject::observedFlag;
    object.flags_.storeRelease(others | (observed ? NSObject::observedFlag : 0));
  }
  /// For objects of the library that are never destroyed, so that no Weak to them is needed. Call it before another
  /// thread can use the object.
  static void setPermanent(const NSObject& object) noexcept { object.flags_.orRelease(NSObject::permanentFlag); }
  static bool isPermanent(const NSObject& object) noexcept {
    return (object.flags_.loadRelaxed() & NSObject::permanentFlag) != 0;
  }
  static constexpr std::uint32_t greatestRecord = ~std::uint32_t{0} >> NSObject::recordShift;
  /// The number of the object's side record; 0 if it has none.
  static std::uint32_t record(const NSObject& object) noexcept {
    return object.flags_.loadAcquire() >> NSObject::recordShift;
  }
  /// Gives the object that record unless it has one. Returns the number of its record.
  static std::uint32_t setRecord(const NSObject& object, std::uint32_t number) noexcept {
    std::uint32_t seen = object.flags_.loadAcquire();
    while (seen >> NSObject::recordShift == 0) {
      if (object.flags_.compareExchange(seen, seen | number << NSObject::recordShift)) return number;
    }
    return seen >> NSObject::recordShift;
  }
  static bool isDying(const NSObject& object) noexcept { return object.count_.loadRelaxed() >= dyingCount / 2; }
  /// True if the last Ref is released.
  static bool isGoing(const NSObject& object) noexcept { return object.count_.loadRelaxed() - 1 >= dyingCount / 2 - 1; }
};

struct AssociationList;

/// Called once while an object is destroyed, before its destructor, with what was attached to it: its ObserverList with
/// one count, and its associations.
void endObserving(NSObject& object, NSObject* observers) noexcept;
void releaseAssociations(AssociationList* associations) noexcept;

}  // namespace norvik::detail
