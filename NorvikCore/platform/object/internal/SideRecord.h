// NorvikCore/platform/object/internal/SideRecord.h - what few objects have: Weaks, observers, associated values.
//
// An object's record is made with the first of them, and found by the number that the object's flags hold: no table is
// searched, and no lock is shared with other objects. It outlives its object as long as a Weak or a registration refers
// to it. Records are taken from a pool that grows by ever larger pieces and does not shrink; taking and giving back is
// one atomic step each.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class ObserverList;
struct AssociationList;

class SideRecord {
 public:
  SideRecord() = default;
  SideRecord(const SideRecord&) = delete;
  SideRecord& operator=(const SideRecord&) = delete;

  /// The object's record, which lives as long as the object; null where there is none.
  [[nodiscard]] static SideRecord* find(const NSObject& object) noexcept;
  /// The same, made where there was none. Not for an object that is being destroyed.
  [[nodiscard]] static SideRecord& findOrMake(const NSObject& object);
  /// One that no object has, and that reads as if its object were gone; with one count for the caller.
  [[nodiscard]] static SideRecord& makeGone();

  void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) giveBack();
  }

  /// The object with one count for the caller, or null once its count has reached zero.
  [[nodiscard]] NSObject* retainedObject() noexcept NK_EXCLUDES(mutex);
  /// The object is gone or going.
  [[nodiscard]] bool isGone() noexcept NK_EXCLUDES(mutex);
  struct Remains {
    ObserverList* observers;
    AssociationList* associations;
  };
  /// The object is being destroyed; its memory stays until this returns. What others had attached to it is the
  /// caller's to release.
  [[nodiscard]] Remains forgetObject() noexcept NK_EXCLUDES(mutex);

  WordMutex mutex;
  ObserverList* observers NK_GUARDED_BY(mutex) = nullptr;        ///< one count; null before the first observer
  AssociationList* associations NK_GUARDED_BY(mutex) = nullptr;  ///< owned; null while there are none

 private:
  friend class SideRecordPool;
  void giveBack() noexcept;

  std::atomic<NSObject*> object_{nullptr};  // written under the mutex
  std::atomic<std::uint32_t> count_{0};     // the object's one, and each reference
  std::uint32_t number_ = 0;
  std::atomic<std::uint32_t> nextFree_{0};  // number of the next one in the pool
};

}  // namespace norvik::detail
