#include "NorvikCore/platform/object/internal/SideRecord.h"

#include "NorvikCore/platform/object/internal/ObjectAccess.h"

#include <memory>
#include <new>
#include <utility>

namespace norvik::detail {

/// Free records form a stack. Its top includes a count of changes, so a thread does not mistake a record that was taken
/// and returned for an unchanged top.
class SideRecordPool {
 public:
  static SideRecord& take() {
    std::uint64_t top = top_.load(std::memory_order_acquire);
    while (const auto number = static_cast<std::uint32_t>(top)) {
      SideRecord& record = SideRecord::at(number);
      const std::uint64_t next = changed(top) | record.nextFree_.load(std::memory_order_relaxed);
      if (top_.compare_exchange_weak(top, next, std::memory_order_acquire)) return record;
    }
    return makeNew();
  }

  static void giveBack(SideRecord& record) noexcept {
    std::uint64_t top = top_.load(std::memory_order_relaxed);
    do {
      record.nextFree_.store(static_cast<std::uint32_t>(top), std::memory_order_relaxed);
    } while (!top_.compare_exchange_weak(top, changed(top) | record.number_, std::memory_order_release,
                                         std::memory_order_relaxed));
  }

 private:
  static std::uint64_t changed(std::uint64_t top) noexcept { return ((top >> 32) + 1) << 32; }

  static SideRecord& makeNew() {
    const std::uint32_t number = made_.fetch_add(1, std::memory_order_relaxed) + 1;
    if (number > ObjectAccess::greatestRecord) {
      made_.fetch_sub(1, std::memory_order_relaxed);
      throw std::bad_alloc();
    }
    const SideRecord::Place place = SideRecord::placeOf(number);
    auto& piece = SideRecord::pieces[place.piece];
    if (!piece.load(std::memory_order_acquire)) {
      auto fresh = std::make_unique<SideRecord[]>(std::size_t{SideRecord::firstPiece} << place.piece);
      SideRecord* none = nullptr;
      if (piece.compare_exchange_strong(none, fresh.get(), std::memory_order_acq_rel))
        static_cast<void>(fresh.release());
    }
    SideRecord& record = SideRecord::at(number);
    record.number_ = number;
    return record;
  }

  static constinit std::atomic<std::uint64_t> top_;
  static constinit std::atomic<std::uint32_t> made_;
};

constinit std::atomic<SideRecord*> SideRecord::pieces[pieceCount]{};
constinit std::atomic<std::uint64_t> SideRecordPool::top_{0};
constinit std::atomic<std::uint32_t> SideRecordPool::made_{0};

SideRecord& SideRecord::findOrMake(const NSObject& object) {
  if (SideRecord* present = find(object)) return *present;
  SideRecord& made = SideRecordPool::take();
  made.object_.store(const_cast<NSObject*>(&object), std::memory_order_relaxed);
  made.count_.store(1, std::memory_order_relaxed);
  const std::uint32_t kept = ObjectAccess::setRecord(object, made.number_);
  if (kept == made.number_) return made;
  made.object_.store(nullptr, std::memory_order_relaxed);
  made.release();
  return at(kept);
}

SideRecord& SideRecord::makeGone() {
  SideRecord& made = SideRecordPool::take();
  made.count_.store(1, std::memory_order_relaxed);
  return made;
}

constinit thread_local char ThreadClaim::ownByte __attribute__((tls_model("initial-exec"))) = 0;

void SideRecord::giveBack() noexcept { SideRecordPool::giveBack(*this); }

NSObject* SideRecord::retainedObject() noexcept {
  const WordLock lock(mutex);
  NSObject* object = object_.load(std::memory_order_relaxed);
  return object && ObjectAccess::retainUnlessGoing(*object) ? object : nullptr;
}

// The mutex is needed even if there is no object: a thread that releases the object removes it before it knows whether
// a claim retains it.
bool SideRecord::isGone() noexcept {
  const WordLock lock(mutex);
  const NSObject* object = object_.load(std::memory_order_relaxed);
  return !object || ObjectAccess::isGoing(*object);
}

// Counts that were passed to the claim before are released by its thread, which has not come to that yet. A claim may
// then not be used, because counts for two threads cannot be kept apart.
ThreadClaim::Taking SideRecord::takeClaim() noexcept {
  const ThreadClaim::Taking taking = claim_.take();
  if (taking != ThreadClaim::Taken || !claim_.passedTo()) [[likely]]
    return taking;
  endClaim();
  return ThreadClaim::Refused;
}

NSObject* SideRecord::claimObject(bool& isTaken) noexcept {
  const ThreadClaim::Taking taking = takeClaim();
  isTaken = taking == ThreadClaim::Taken;
  if (taking == ThreadClaim::Refused) return nullptr;
  NSObject* object = object_.load(std::memory_order_seq_cst);
  if (object) return object;
  if (std::exchange(isTaken, false)) endClaim();
  return nullptr;
}

NSObject* SideRecord::claimList(bool& isTaken) noexcept {
  const ThreadClaim::Taking taking = takeClaim();
  isTaken = taking == ThreadClaim::Taken;
  if (taking == ThreadClaim::Refused) return nullptr;
  NSObject* list = observers.seen();
  if (list && !claim_.isPassedHere()) return list;  // in this order, because a list is replaced after it was passed
  if (std::exchange(isTaken, false)) endClaim();
  return nullptr;
}

void SideRecord::releasePassed() noexcept {
  Passed passed;  // outlives the lock
  const WordLock lock(mutex);
  if (!claim_.isPassedHere()) return;
  claim_.setNothingPassed();
  passed = std::exchange(passed_, Passed());
}

/// Passes a count of the caller to the claim of that thread, or to a claim before it whose counts are not released yet.
/// False if the claim has ended.
bool SideRecord::pass(ThreadClaim::Thread holder, Ref<NSObject> Passed::*what, NSObject& counted) noexcept {
  passed_.*what = Ref<NSObject>::adopt(&counted);
  if (claim_.passedTo() || claim_.setPassedTo(holder)) return true;
  static_cast<void>((passed_.*what).take());
  claim_.setNothingPassed();
  return false;
}

// A claim that already has a list does not use this one, because claimList() refuses it. Neither does a claim that was
// taken while counts of the claim before it were not released: takeClaim() refuses it, or, if they were released
// meanwhile, it finds the list locked or replaced.
bool SideRecord::passList(NSObject& list, ThreadClaim::Thread holder) noexcept {
  const WordLock lock(mutex);
  if (const ThreadClaim::Thread passedTo = claim_.passedTo(); passedTo && (passedTo != holder || passed_.list)) {
    return false;
  }
  detail::retain(&list);
  if (pass(holder, &Passed::list, list)) return true;
  ObjectAccess::count(list).subtractAcquireRelease(1);
  return false;
}

// The object is removed before the claim is looked for, so a thread that claims it later finds no object. If the object
// is claimed, this count becomes the claim's.
SideRecord::Release SideRecord::releaseObject(NSObject& object, Remains& remains) noexcept {
  const WordLock lock(mutex);
  object_.store(nullptr, std::memory_order_seq_cst);
  auto& count = ObjectAccess::count(object);
  const ThreadClaim::Thread holder = claim_.holder();
  std::uint32_t last = 1;
  if (!holder && count.compareExchange(last, ObjectAccess::dyingCount)) {
    remains = {nullptr, std::exchange(associations, nullptr)};
    return Release::Destroy;
  }
  object_.store(&object, std::memory_order_release);
  if (!holder || count.loadAcquire() != 1) return Release::NotLast;
  return pass(holder, &Passed::object, object) ? Release::Done : Release::NotLast;
}

}  // namespace norvik::detail
