// NorvikCore/platform/kernel/internal/ForkGate.h - how a fork ensures that no other thread holds a lock.
//
// Each thread has a cell, which counts the locks it holds. The thread writes it without an atomic operation; a fork
// closes the gate, makes the kernel order the memory of all threads (membarrier), and waits for the cells. So a lock
// costs a few plain instructions, and a fork pays for the synchronisation. If the kernel does not support membarrier,
// threads order their own memory.
#pragma once

#include <atomic>
#include <cstdint>

namespace norvik::kernel::detail {

struct alignas(64) ForkGateCell {
  std::atomic<std::uint32_t> depth{0};   ///< how many locks its thread holds or waits for
  std::atomic<std::uint32_t> isUsed{1};  ///< 1 while a living thread uses it
  std::atomic<bool> isForking{false};    ///< its thread holds no lock, and waits until it may fork
  bool closedGate = false;               ///< for the fork of its thread
  bool isGivenBack = false;              ///< at the next release, because its thread is ending
  ForkGateCell* next = nullptr;
};

/// gateOpenUnordered: open, and threads must order their memory themselves because the kernel does not.
enum Gate : std::uint32_t { gateOpen, gateOpenUnordered, gateClosed };

extern constinit thread_local ForkGateCell* ownCell __attribute__((tls_model("initial-exec")));
extern constinit std::atomic<std::uint32_t> gate;

ForkGateCell& findOwnCell() noexcept;
/// For a cell whose depth is already 1. Returns when that is visible to forks and the gate was seen open after it.
void passGateSlowly(ForkGateCell& own) noexcept;
void giveCellBack() noexcept;
/// Orders the memory of all threads: what they stored before is visible to the caller afterwards, and what the caller
/// stored before is visible to their later loads. It does nothing if the gate is gateOpenUnordered while it is open.
void orderOtherThreads() noexcept;

inline ForkGateCell& holdForksHere() noexcept {
  ForkGateCell& own = ownCell ? *ownCell : findOwnCell();
  const std::uint32_t depth = own.depth.load(std::memory_order_relaxed);
  own.depth.store(depth + 1, std::memory_order_relaxed);
  if (depth != 0) return own;
  std::atomic_signal_fence(std::memory_order_seq_cst);
  if (gate.load(std::memory_order_acquire) != gateOpen) [[unlikely]]
    passGateSlowly(own);
  return own;
}

inline void releaseForksHere() noexcept {
  ForkGateCell& own = *ownCell;
  const std::uint32_t depth = own.depth.load(std::memory_order_relaxed) - 1;
  own.depth.store(depth, std::memory_order_release);
  if (own.isGivenBack && depth == 0) [[unlikely]]
    giveCellBack();
}

}  // namespace norvik::kernel::detail
