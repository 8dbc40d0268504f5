// NorvikCore/platform/object/internal/ObjectAccess.h - the inside of NSObject, for the parts of the runtime that share
// it.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

namespace norvik::detail {

struct ObjectAccess {
  /// The count of an object that is being destroyed, so far from zero that Refs taken meanwhile never reach it.
  static constexpr std::uint32_t dyingCount = 0x80000000;

  static AtomicWord<std::uint32_t>& count(const NSObject& object) noexcept { return object.count_; }
  /// Counts the object up, unless its count has reached zero. Its memory must be sure to be there.
  static bool retainUnlessGoing(const NSObject& object) noexcept {
    std::uint32_t seen = object.count_.loadRelaxed();
    do {
      if (seen == 0 || seen >= dyingCount / 2) return false;
    } while (!object.count_.compareExchange(seen, seen + 1));
    return true;
  }
  /// The caller has the only Ref, and nobody watches, observes or associates anything with the object.
  static bool isUnshared(const NSObject& object) noexcept {
    return object.count_.loadAcquire() == 1 && object.flags_.loadAcquire() == 0;
  }
  static bool initialise(NSObject& object) { return object.init(); }
  [[gnu::noinline]] static void destroy(const NSObject* object) noexcept;

  static void setObserved(const NSObject& object, bool observed) noexcept {
    set(object, NSObject::observedFlag, observed);
  }
  /// For objects of the library that are never destroyed: nobody needs a Weak to them.
  static void setPermanent(const NSObject& object) noexcept { set(object, NSObject::permanentFlag, true); }
  static bool isPermanent(const NSObject& object) noexcept {
    return (object.flags_.loadRelaxed() & NSObject::permanentFlag) != 0;
  }
  static constexpr std::uint32_t greatestRecord = ~std::uint32_t{0} >> NSObject::recordShift;
  /// The number of the object's side record; 0 where there is none.
  static std::uint32_t record(const NSObject& object) noexcept {
    return object.flags_.loadAcquire() >> NSObject::recordShift;
  }
  /// Gives the object that record unless it has one; the one it has then.
  static std::uint32_t setRecord(const NSObject& object, std::uint32_t number) noexcept {
    std::uint32_t seen = object.flags_.loadAcquire();
    while (seen >> NSObject::recordShift == 0) {
      if (object.flags_.compareExchange(seen, seen | number << NSObject::recordShift)) return number;
    }
    return seen >> NSObject::recordShift;
  }
  static bool isDying(const NSObject& object) noexcept { return object.count_.loadRelaxed() >= dyingCount / 2; }
  /// The last Ref is gone.
  static bool isGoing(const NSObject& object) noexcept { return object.count_.loadRelaxed() - 1 >= dyingCount / 2 - 1; }

 private:
  static void set(const NSObject& object, std::uint32_t flag, bool on) noexcept {
    if (on) {
      object.flags_.orRelease(flag);
    } else {
      object.flags_.andRelease(~flag);
    }
  }
};

class ObserverList;
struct AssociationList;

/// Called once while an object is destroyed, before its destructor, with what was attached to it.
void endObserving(NSObject& object, ObserverList* observers) noexcept;
void releaseAssociations(AssociationList* associations) noexcept;

}  // namespace norvik::detail
