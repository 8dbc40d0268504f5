// NorvikCore/platform/runtime/internal/ObjectAccess.h - the inside of NSObject, for the parts of the runtime that share
// it.
#pragma once

#include "NorvikCore/platform/runtime/NSObject.h"

namespace norvik::detail {

struct ObjectAccess {
  /// The count of an object that is being destroyed, so far from zero that Refs taken meanwhile never reach it.
  static constexpr std::uint32_t dyingCount = 0x80000000;

  static std::atomic<std::uint32_t>& count(const NSObject& object) noexcept { return object.count_; }
  static bool initialise(NSObject& object) { return object.init(); }
  static void destroy(const NSObject* object) noexcept;

  static void setObserved(const NSObject& object, bool observed) noexcept {
    set(object, NSObject::observedFlag, observed);
  }
  static void setHasWeak(const NSObject& object) noexcept { set(object, NSObject::weakFlag, true); }
  static void setHasAssociated(const NSObject& object) noexcept { set(object, NSObject::associatedFlag, true); }
  static bool hasAssociated(const NSObject& object) noexcept {
    return (object.flags_.load(std::memory_order_acquire) & NSObject::associatedFlag) != 0;
  }
  static bool isDying(const NSObject& object) noexcept {
    return object.count_.load(std::memory_order_relaxed) >= dyingCount / 2;
  }

 private:
  static void set(const NSObject& object, std::uint32_t flag, bool on) noexcept {
    if (on) {
      object.flags_.fetch_or(flag, std::memory_order_release);
    } else {
      object.flags_.fetch_and(~flag, std::memory_order_release);
    }
  }
};

/// Called once while an object goes, before its destructor, where its flag says that there is something to forget.
void forgetWeak(const NSObject* object) noexcept;
void forgetAssociated(const NSObject* object) noexcept;
void forgetObservers(NSObject& object) noexcept;

}  // namespace norvik::detail
