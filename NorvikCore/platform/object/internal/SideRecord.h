// NorvikCore/platform/object/internal/SideRecord.h - data that few objects have: Weaks, observers, associated values.
//
// An object's record is created with the first of them, and found by the number in the object's flags. So no table is
// searched, and no lock is shared with other objects. The record outlives its object as long as a Weak or a
// registration refers to it. Records come from a pool that grows by ever larger pieces and never shrinks; taking and
// returning a record is one atomic step each.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/internal/LentPointer.h"
#include "NorvikCore/platform/object/internal/ThreadClaim.h"
#include "NorvikCore/platform/object/internal/WordMutex.h"

#include <atomic>
#include <bit>
#include <cstdint>
#include <utility>

namespace norvik::detail {

struct AssociationList;

class SideRecord {
 public:
  SideRecord() = default;
  SideRecord(const SideRecord&) = delete;
  SideRecord& operator=(const SideRecord&) = delete;

  /// The object's record, which lives as long as the object; null if there is none.
  [[nodiscard]] static SideRecord* find(const NSObject& object) noexcept {
    const std::uint32_t number = ObjectAccess::record(object);
    return number != 0 ? &at(number) : nullptr;
  }
  /// The same, created if there was none. Not for an object that is being destroyed.
  [[nodiscard]] static SideRecord& findOrMake(const NSObject& object);
  /// A record without an object, which reads as if its object were destroyed; with one count for the caller.
  [[nodiscard]] static SideRecord& makeGone();

  void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) giveBack();
  }

  /// True if it is the record of that object, which must not be destroyed. Sometimes false while another thread
  /// releases the object.
  [[nodiscard]] bool isOf(const NSObject& object) const noexcept {
    return object_.load(std::memory_order_relaxed) == &object;
  }
  /// The object with one count for the caller; null once its count has reached zero.
  [[nodiscard]] NSObject* retainedObject() noexcept NK_EXCLUDES(mutex);
  /// True if the object is destroyed or is being destroyed.
  [[nodiscard]] bool isGone() noexcept NK_EXCLUDES(mutex);

  /// Claims the object (ThreadClaim.h), and returns it; null, without a claim, if another thread claims it, or if it
  /// may be destroyed. Sets `isTaken` to whether the caller must call endClaim().
  [[nodiscard]] NSObject* claimObject(bool& isTaken) noexcept;
  /// Claims the list of observers together with the object, which the caller must know to be alive, and returns the
  /// list. Null, without a claim, if there is no list, or if it cannot be claimed.
  [[nodiscard]] NSObject* claimList(bool& isTaken) noexcept;
  void endClaim() noexcept {
    if (claim_.end()) [[unlikely]]
      releasePassed();
  }
  /// True if counts were passed to the calling thread's claim.
  [[nodiscard]] bool isPassedHere() const noexcept { return claim_.isPassedHere(); }
  /// Passes a count of the list to a claim that may use it, and returns true: the list must then not be changed. The
  /// list is locked.
  [[nodiscard]] bool passList(NSObject& list) noexcept NK_EXCLUDES(mutex) {
    const ThreadClaim::Thread holder = claim_.holder();
    return holder && passList(list, holder);
  }

  struct Remains {
    NSObject* observers = nullptr;  ///< with one count
    AssociationList* associations = nullptr;
  };
  enum class Release { Done, Destroy, NotLast };
  /// Releases the object, whose count was seen to be 1. If the result is Destroy, the caller must destroy it, and
  /// release what was attached to it.
  [[nodiscard]] Release releaseObject(NSObject& object, Remains& remains) noexcept NK_EXCLUDES(mutex);

  WordMutex mutex;
  LentPointer observers;                                         ///< the ObserverList; null before the first observer
  AssociationList* associations NK_GUARDED_BY(mutex) = nullptr;  ///< owned; null while there are none

 private:
  friend class SideRecordPool;

  // Numbers count from 1. Piece p holds 2^p times as many records as the first one.
  struct Place {
    std::size_t piece, offset;
  };
  static constexpr std::uint32_t firstPiece = 64;
  static constexpr std::size_t pieceCount = std::bit_width(ObjectAccess::greatestRecord / firstPiece) + 1;
  static constinit std::atomic<SideRecord*> pieces[pieceCount];

  static Place placeOf(std::uint32_t number) noexcept {
    const std::uint32_t counted = number - 1 + firstPiece;
    const auto piece = static_cast<std::size_t>(std::bit_width(counted / firstPiece) - 1);
    return {piece, counted - (std::size_t{firstPiece} << piece)};
  }
  [[nodiscard]] static SideRecord& at(std::uint32_t number) noexcept {
    const Place place = placeOf(number);
    return pieces[place.piece].load(std::memory_order_acquire)[place.offset];
  }

  void giveBack() noexcept;
  /// Counts that were passed to a claim. They must not be released under a lock.
  struct Passed {
    Ref<NSObject> list, object;
  };
  [[nodiscard]] ThreadClaim::Taking takeClaim() noexcept;
  [[nodiscard]] bool passList(NSObject& list, ThreadClaim::Thread holder) noexcept NK_EXCLUDES(mutex);
  [[gnu::noinline]] void releasePassed() noexcept NK_EXCLUDES(mutex);
  [[nodiscard]] bool pass(ThreadClaim::Thread holder, Ref<NSObject> Passed::*what, NSObject& counted) noexcept
      NK_REQUIRES(mutex);

  std::atomic<NSObject*> object_{nullptr};  // written under the mutex
  ThreadClaim claim_;
  Passed passed_ NK_GUARDED_BY(mutex);
  std::atomic<std::uint32_t> count_{0};  // one for the object, and one for each reference
  std::uint32_t number_ = 0;
  std::atomic<std::uint32_t> nextFree_{0};  // number of the next record in the pool
};

}  // namespace norvik::detail
