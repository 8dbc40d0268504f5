// NorvikCore/platform/dispatch/internal/ItemPages.h - memory for items, which mostly live for microseconds and are
// freed on another thread than the one that made them.
//
// A thread cuts its items from a page of its own, one behind the other. So no list is searched, and the thread that
// runs the items reads memory in order, which its processor prefetches. Single pieces are not reused; a page is reused
// when all its pieces have been returned. A counter in the page starts at ownedBit. It falls by one for each returned
// piece, and by the number of pieces that were never cut when the owning thread retires the page. A thread returns
// pieces in runs: one atomic operation for successive pieces of one page. Free pages are kept for the next burst. While
// nothing runs, the pool's lookout returns a part of them to the heap each time it checks, so an idle process keeps
// none.
#pragma once

#include "NorvikCore/platform/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik::detail {

struct ItemPage {
  static constexpr std::uint32_t ownedBit = std::uint32_t{1} << 31;
  std::atomic<std::uint32_t> pieces{ownedBit};
  ItemPage* below = nullptr;  // the next page in the list of spare pages
};

class NK_EXPORT_FOR_TESTS ItemPages {
 public:
  /// Memory whose address plus 8 bytes has the alignment of the heap. Null if `size` is too large for a page, and at
  /// the end of the thread.
  static std::byte* take(std::size_t size, ItemPage*& page);
  static void giveBack(ItemPage* page) noexcept;

  /// Returns a part of the spare pages to the heap.
  static void trimSpares() noexcept;
  [[nodiscard]] static std::size_t spareCount() noexcept;
};

}  // namespace norvik::detail
