// NorvikCore/platform/kernel/AtomicWord.h - a number, flag or pointer that several threads read and change.
//
// A small std::atomic for headers that every file includes: <atomic> alone takes as long to include as all of <string>
// without its ranges. The names give the memory order; code that needs another order is in a source file and uses
// std::atomic.
#pragma once

namespace norvik::detail {

template <class T>
class AtomicWord {
  static_assert(__atomic_always_lock_free(sizeof(T), nullptr));

 public:
  constexpr AtomicWord() noexcept = default;
  constexpr explicit AtomicWord(T value) noexcept : value_(value) {}
  AtomicWord(const AtomicWord&) = delete;
  AtomicWord& operator=(const AtomicWord&) = delete;

  [[nodiscard]] T loadRelaxed() const noexcept { return __atomic_load_n(&value_, __ATOMIC_RELAXED); }
  [[nodiscard]] T loadAcquire() const noexcept { return __atomic_load_n(&value_, __ATOMIC_ACQUIRE); }
  void storeRelaxed(T value) noexcept { __atomic_store_n(&value_, value, __ATOMIC_RELAXED); }
  void storeRelease(T value) noexcept { __atomic_store_n(&value_, value, __ATOMIC_RELEASE); }

  // Each returns the previous value.
  T exchangeAcquire(T value) noexcept { return __atomic_exchange_n(&value_, value, __ATOMIC_ACQUIRE); }
  T exchangeRelease(T value) noexcept { return __atomic_exchange_n(&value_, value, __ATOMIC_RELEASE); }
  T addRelaxed(T amount) noexcept { return __atomic_fetch_add(&value_, amount, __ATOMIC_RELAXED); }
  T subtractAcquireRelease(T amount) noexcept { return __atomic_fetch_sub(&value_, amount, __ATOMIC_ACQ_REL); }
  T orRelease(T bits) noexcept { return __atomic_fetch_or(&value_, bits, __ATOMIC_RELEASE); }
  T andRelease(T bits) noexcept { return __atomic_fetch_and(&value_, bits, __ATOMIC_RELEASE); }

  /// Stores `wanted` if the value is `expected`; otherwise sets `expected` to the value. Acquires and releases.
  bool compareExchange(T& expected, T wanted) noexcept {
    return __atomic_compare_exchange_n(&value_, &expected, wanted, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
  }

 private:
  T value_{};
};

}  // namespace norvik::detail
