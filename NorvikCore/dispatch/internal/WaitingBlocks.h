// NorvikCore/dispatch/internal/WaitingBlocks.h - how the waiting blocks of a wrapper retain it.
//
// If each block had a Ref of its own, the threads that enqueue blocks and the worker that runs them would change one
// count, and its cache line would move between the processors twice for each block. So on a serial queue the blocks
// hold one Ref together. It is counted in two places: the threads that enqueue count the blocks that they add, the
// queue counts the blocks that have ended. The block that finds the two equal is the last one and releases the Ref.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/dispatch/internal/QueueCore.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

/// Ownership: owned by its wrapper.
/// Threads:   add() from any thread; end() in a block of the queue. In a child made by fork() the parent's blocks never
///            end, so a wrapper that had some is not destroyed there.
class WaitingBlocks {
 public:
  explicit WaitingBlocks(const dispatch_queue_t& queue) noexcept
      : blocksEndOneByOne_(queue && queue.core()->isSerial()) {}

  /// Before a block is enqueued. The caller has a Ref to the wrapper.
  void add(TSKDispatchQueue& wrapper) noexcept {
    if (!blocksEndOneByOne_) [[unlikely]]
      return retain(&wrapper);
    if ((added_.fetch_add(one, std::memory_order_acq_rel) & held) == 0) takeRef(wrapper);
  }

  /// At the end of a block. May destroy the wrapper, and this object with it.
  void end(TSKDispatchQueue& wrapper) noexcept {
    if (!blocksEndOneByOne_) [[unlikely]]
      return release(&wrapper);
    if (++ended_ < knownAdded_) [[likely]]
      return;
    std::uint64_t added = ended_ * one | held;
    if (added_.compare_exchange_strong(added, ended_ * one, std::memory_order_acq_rel, std::memory_order_acquire))
      return release(&wrapper);
    knownAdded_ = added / one;
  }

 private:
  static constexpr std::uint64_t held = 1;  // bit in added_: the blocks have their Ref
  static constexpr std::uint64_t one = 2;   // what a block adds to added_

  /// The bit stays set until the caller's block has ended, because that block is already counted.
  void takeRef(TSKDispatchQueue& wrapper) noexcept {
    retain(&wrapper);
    if ((added_.fetch_or(held, std::memory_order_acq_rel) & held) != 0) release(&wrapper);  // another thread was first
  }

  const bool blocksEndOneByOne_;
  alignas(64) std::atomic<std::uint64_t> added_{0};
  // Confined to the queue.
  alignas(64) std::uint64_t ended_ = 0;
  std::uint64_t knownAdded_ = 0;  // when end() last read added_
};

}  // namespace norvik::detail
