// NorvikCore/platform/kernel/internal/ForkGate.h - how a fork finds out that no thread holds a lock.
//
// Each thread has a cell of its own, which says how many locks it holds. The thread writes it without an atomic step;
// a fork closes the gate, has the kernel order the memory of all threads (membarrier), and waits for the cells. So a
// lock pays a few plain instructions, and a fork pays for all. Where the kernel refuses, threads order their own
// memory.
#pragma once

#include <atomic>
#include <cstdint>

namespace norvik::kernel::detail {

struct alignas(64) ForkGateCell {
  std::atomic<std::uint32_t> depth{0};   ///< how many locks its thread holds or waits for
  std::atomic<std::uint32_t> isUsed{1};  ///< by a living thread
  std::atomic<bool> isForking{false};    ///< its thread holds no lock, and waits until it may fork
  bool closedGate = false;               ///< for the fork of its thread
  bool isGivenBack = false;              ///< at the next release, for its thread is ending
  ForkGateCell* next = nullptr;
};

/// Where the kernel does not order the memory of threads, an open gate says so, and threads do it themselves.
enum Gate : std::uint32_t { gateOpen, gateOpenUnordered, gateClosed };

extern constinit thread_local ForkGateCell* ownCell __attribute__((tls_model("initial-exec")));
extern constinit std::atomic<std::uint32_t> gate;

ForkGateCell& findOwnCell() noexcept;
/// For a cell that says 1 already; returns once that was said before an open gate was seen.
void passGateSlowly(ForkGateCell& own) noexcept;
void giveCellBack() noexcept;

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
