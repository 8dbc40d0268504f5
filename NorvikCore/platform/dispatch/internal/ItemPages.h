// NorvikCore/platform/dispatch/internal/ItemPages.h - memory for items, which mostly live for microseconds and die on
// another thread than the one that made them.
//
// A thread cuts its items from a page of its own, one behind the other: no list is searched, and the thread that runs
// them reads memory in order, which its processor fetches ahead. Pieces are not used again one by one; a page is, once
// all its pieces have been given back. It counts them: from ownedBit down by one for each piece that is given back, and
// by what was never cut when its thread is done with it. Who gives pieces back does so in runs, one atomic operation
// for neighbours of one page. Pages that have come free are kept for the next burst; the pool's lookout gives them back
// to the heap, a part at each look, while nothing runs: an idle process keeps none.
#pragma once

#include "NorvikCore/platform/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik::detail {

struct ItemPage {
  static constexpr std::uint32_t ownedBit = std::uint32_t{1} << 31;
  std::atomic<std::uint32_t> pieces{ownedBit};
  ItemPage* below = nullptr;  // while it waits to be used again
};

class NK_EXPORT ItemPages {
 public:
  /// Memory that is aligned as the heap's is 8 bytes further on; null for what is too large for a page, and at the end
  /// of the thread.
  static std::byte* take(std::size_t size, ItemPage*& page);
  static void giveBack(ItemPage* page) noexcept;

  /// Gives a part of the pages that wait to be used again back to the heap.
  static void trimSpares() noexcept;
  [[nodiscard]] static std::size_t spareCount() noexcept;
};

}  // namespace norvik::detail
