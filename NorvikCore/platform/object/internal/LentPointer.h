// NorvikCore/platform/object/internal/LentPointer.h - a pointer to a counted object that is borrowed often and changed
// rarely.
//
//   if (const auto list = Ref<NSObject>::adopt(lent.borrow())) read(*list);
//   NSObject* list = lent.lock();       // for changing the object, or for replacing it
//   lent.unlock(list);
//
// Borrowing is one atomic step, and any number of threads may borrow at once, because the number of loans is part of
// the word that holds the pointer. A loan is a count of the object: it ends when the borrower releases the object, also
// if the pointer meanwhile refers to another one. The count alone is therefore too low by the loans in the word;
// lock() moves these to the count. A thread that finds the pointer locked sleeps. A fork waits until the pointer is
// unlocked, and its child finds it free (kernel/Fork.h); loans of other threads never end in the child, where the
// object is then replaced instead of changed.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/internal/ForkGate.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/PlainRelease.h"

#include <atomic>
#include <bit>
#include <cstdint>

namespace norvik::detail {

class NK_CAPABILITY("mutex") LentPointer {
 public:
  LentPointer() noexcept = default;
  LentPointer(const LentPointer&) = delete;
  LentPointer& operator=(const LentPointer&) = delete;

  /// The object with one count for the caller; null if there is none.
  [[nodiscard]] NSObject* borrow() noexcept {
    std::uint64_t seen = word_.load(std::memory_order_relaxed);
    while (seen != 0 && seen != isLocked && seen < manyLoans) {
      if (word_.compare_exchange_weak(seen, seen + oneLoan, std::memory_order_acquire, std::memory_order_relaxed))
        return objectIn(seen);
    }
    return seen == 0 ? nullptr : borrowSlowly();
  }

  /// The object without a count, for a caller that protects it by a claim (ThreadClaim.h); null if there is none or if
  /// it is locked.
  [[nodiscard]] NSObject* seen() const noexcept {
    const std::uint64_t word = word_.load(std::memory_order_seq_cst);
    return word == isLocked ? nullptr : objectIn(word);
  }

  /// The object or null, for the caller alone until unlock(). Not recursive.
  [[nodiscard]] NSObject* lock() noexcept NK_ACQUIRE() {
    kernel::detail::holdForksHere();
    std::uint64_t seen = word_.exchange(isLocked, std::memory_order_seq_cst);
    if (seen == isLocked) seen = lockSlowly();
    NSObject* object = objectIn(seen);
    if (seen >= oneLoan) ObjectAccess::count(*object).addRelaxed(static_cast<std::uint32_t>(seen / oneLoan));
    return object;
  }
  /// Sets the pointer.
  void unlock(NSObject* object) noexcept NK_RELEASE() {
    visible_ = object;
    release_.store(word_, std::uint64_t{reinterpret_cast<std::uintptr_t>(object)}, half());
    kernel::detail::releaseForksHere();
  }

  /// True for a locked object that no other code refers to.
  [[nodiscard]] static bool isUnshared(const NSObject& object) noexcept {
    return ObjectAccess::count(object).loadAcquire() == share;
  }
  /// Call it before the object is first passed to unlock(): it turns the caller's count into the pointer's.
  static NSObject& taken(NSObject& object) noexcept {
    ObjectAccess::count(object).addRelaxed(share - 1);
    return object;
  }
  /// Empties the pointer and passes one count to the caller. Null if there is no object.
  [[nodiscard]] NSObject* take() noexcept {
    if (word_.load(std::memory_order_relaxed) == 0) return nullptr;
    NSObject* const object = lock();
    unlock(nullptr);
    if (object) ObjectAccess::count(*object).subtractAcquireRelease(share - 1);
    return object;
  }
  /// Releases a locked object that is no longer passed to unlock().
  static void drop(NSObject& object) noexcept {
    if (ObjectAccess::count(object).subtractAcquireRelease(share) == share) ObjectAccess::destroy(&object);
  }

 private:
  // The 16 high bits of an address are 0: they hold the number of loans. A locked word has no address and no loans.
  static constexpr std::uint64_t isLocked = 1;
  static constexpr std::uint64_t oneLoan = std::uint64_t{1} << 48;
  static constexpr std::uint64_t manyLoans = std::uint64_t{1} << 63;  ///< then the borrower moves them to the count
  /// The pointer's own part of the count. It exceeds the loans of a word, so the count is never zero when borrowers
  /// have released the object and lock() has not yet added their loans.
  static constexpr std::uint32_t share = 1 << 20;

  static NSObject* objectIn(std::uint64_t word) noexcept {
    return reinterpret_cast<NSObject*>(static_cast<std::uintptr_t>(word & (oneLoan - 1)));
  }
  /// Taking the lock waits for its owner, and moves the loans from the word to the count.
  [[gnu::noinline, nodiscard]] NSObject* borrowSlowly() noexcept {
    NSObject* const object = lock();
    if (object) retain(object);
    unlock(object);
    return object;
  }
  [[gnu::noinline, nodiscard]] std::uint64_t lockSlowly() noexcept {
    std::uint64_t seen = isLocked;
    release_.wait(half(), isLocked, [&] {
      seen = word_.load(std::memory_order_seq_cst);
      if (seen != isLocked) seen = word_.exchange(isLocked, std::memory_order_seq_cst);
      return seen != isLocked;
    });
    return seen;
  }
  /// The half of the word with that bit, on which threads sleep.
  [[nodiscard]] const std::atomic<std::uint32_t>& half() const noexcept {
    return reinterpret_cast<const std::atomic<std::uint32_t>*>(&word_)[std::endian::native == std::endian::big ? 1 : 0];
  }

  std::atomic<std::uint64_t> word_{0};
  PlainRelease release_;
  NSObject* visible_ = nullptr;  ///< for leak checkers, which do not see an address beside a number of loans
};

}  // namespace norvik::detail
