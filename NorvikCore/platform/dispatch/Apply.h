// NorvikCore/platform/dispatch/Apply.h - a loop whose rounds run in parallel, as blocks of a queue.
//
//   std::vector<Decimal> net(payslips.size());
//   dispatch_apply(payslips.size(), dispatch_get_global_queue(), [&](std::size_t i) { net[i] = netPay(payslips[i]); });
//   // every round has run; net is complete
//
// The calling thread takes part, and workers help: as many threads in all as there are processors, two at least. If the
// queue or one of its targets is serial or is the main queue, the rounds run one after the other, in order. Otherwise
// threads take shares of consecutive rounds, the lowest first, and the shares become smaller towards the end.
//
// Threads: synchronised. Several threads call the block at once, so it must guard what it shares. A round may enqueue
//          blocks and call dispatch_apply() again; it may not wait for another round.
// Errors:  the first exception that leaves a round reaches the caller once the rounds that had begun have ended; no
//          further round begins. An empty queue raises NSInvalidArgumentException. Where dispatch_sync() would
//          deadlock, this aborts in the same way.
// Cost:    under a microsecond, plus an atomic operation for each share and the wake-up of helpers. A parallel loop is
//          faster than a plain one if all rounds together take some ten microseconds. Between two rounds only the end
//          of the share is read.
#pragma once  // include time: <atomic>: a round that fails moves the end of the other threads' shares

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/export.h"

#include <atomic>
#include <cstddef>

namespace norvik {

namespace detail {
/// Calls the block for the rounds from `first` up to `end`, which another thread may lower meanwhile.
using Rounds = void (*)(void* block, std::size_t first, const std::atomic<std::size_t>& end);
NK_EXPORT void applyRounds(std::size_t iterations, const dispatch_queue_t& queue, Rounds rounds, void* block);

/// round < end, by a relaxed load. After the load of an std::atomic, g++ reads again everything that the block captures
/// by reference, as if the load could have changed it: that doubles the time of a round of a nanosecond. The
/// instruction below is the same load, and the compiler knows that it changes nothing. It is repeated for each round,
/// because the round is one of its operands. `inline` tells g++ that it is short: g++ then copies it where that moves a
/// condition of the block out of the loop.
[[nodiscard]] inline bool isBefore(std::size_t round, const std::atomic<std::size_t>& end) noexcept {
#if defined(__x86_64__)
  bool below;
  __asm__ inline("cmpq %2, %1" : "=@ccb"(below) : "r"(round), "m"(end));
  return below;
#else
  return round < end.load(std::memory_order_relaxed);
#endif
}
}  // namespace detail

/// Calls block(0), block(1) ... block(iterations - 1) and returns once all have returned. The block is called in place,
/// not copied; its result is not used.
template <class F>
void dispatch_apply(std::size_t iterations, const dispatch_queue_t& queue, F&& block) {
  auto call = [&block](std::size_t index) { static_cast<void>(block(index)); };
  constexpr auto rounds = [](void* context, std::size_t first, const std::atomic<std::size_t>& end) {
    const auto& round = *static_cast<decltype(call)*>(context);
    for (; detail::isBefore(first, end); ++first) round(first);
  };
  detail::applyRounds(iterations, queue, rounds, &call);
}

}  // namespace norvik
