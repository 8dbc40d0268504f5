#include "NorvikCore/platform/dispatch/internal/ItemPages.h"

#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"

#include <new>
#include <utility>

namespace norvik::detail {
namespace {

constexpr std::size_t pageSize = 4096 - sizeof(void*);  // a power of two together with the heap's own word
constexpr std::size_t alignment = alignof(std::max_align_t);
constexpr std::size_t firstPiece = (sizeof(ItemPage) + alignment - 1) / alignment * alignment + alignment / 2;
constexpr std::size_t largestPiece = 512;
constexpr std::size_t mostSpares = 4096;  // 16 MiB: enough for a burst of about 350,000 small blocks

#if defined(__SANITIZE_ADDRESS__)
constexpr bool usesPages = false;  // the address sanitizer must see every item separately
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool usesPages = false;
#else
constexpr bool usesPages = true;
#endif
#else
constexpr bool usesPages = true;
#endif

/// The free pages that are kept for reuse.
class SparePages final : public ForkAware {
 public:
  static SparePages& shared() {
    return sharedForkAware<SparePages>([] { return new SparePages; });
  }

  ItemPage* take() {
    if (ItemPage* page = takeSpare()) {
      page->pieces.store(ItemPage::ownedBit, std::memory_order_relaxed);
      return page;
    }
    return ::new (::operator new(pageSize)) ItemPage;
  }

  void put(ItemPage* page) noexcept {
    {
      const QueueLock lock(mutex_);
      if (count() < mostSpares) {
        page->below = std::exchange(first_, page);
        count_.store(count() + 1, std::memory_order_relaxed);
        return;
      }
    }
    ::operator delete(page);
  }

  void trim() noexcept {
    for (std::size_t left = count() / 8 + 16; left > 0 && count() > 0; --left) {
      if (ItemPage* page = takeSpare()) ::operator delete(page);
    }
  }

  [[nodiscard]] std::size_t count() const noexcept { return count_.load(std::memory_order_relaxed); }

  void resetAfterFork() noexcept override {
    mutex_.resetAfterFork();
    const QueueLock lock(mutex_);
    first_ = nullptr;  // another thread may have been changing the list
    count_.store(0, std::memory_order_relaxed);
  }

 private:
  ItemPage* takeSpare() noexcept {
    const QueueLock lock(mutex_);
    if (first_ == nullptr) return nullptr;
    count_.store(count() - 1, std::memory_order_relaxed);
    return std::exchange(first_, first_->below);
  }

  QueueMutex mutex_;
  ItemPage* first_ NK_GUARDED_BY(mutex_) = nullptr;
  std::atomic<std::size_t> count_{0};  // changed under the mutex
};

/// The pages of a thread: the page that it cuts from, and the page whose returned pieces it counts.
struct ThreadPages {
  ItemPage* own = nullptr;
  std::byte* next = nullptr;
  std::byte* end = nullptr;
  std::uint32_t cut = 0;
  std::uint32_t returned = 0;
  ItemPage* returnedTo = nullptr;
  bool watched = false;  // the destructor of ThreadEnd will run
  bool ended = false;    // that destructor has run
};

constinit thread_local ThreadPages pages __attribute__((tls_model("initial-exec")));

void subtract(ItemPage* page, std::uint32_t pieces) noexcept {
  if (page->pieces.fetch_sub(pieces, std::memory_order_acq_rel) == pieces) SparePages::shared().put(page);
}

void retireOwn() noexcept {
  if (pages.own != nullptr) subtract(pages.own, ItemPage::ownedBit - pages.cut);
  pages.own = nullptr;
  pages.next = pages.end = nullptr;
  pages.cut = 0;
}

void returnCounted() noexcept {
  if (pages.returned > 0) subtract(pages.returnedTo, pages.returned);
  pages.returnedTo = nullptr;
  pages.returned = 0;
}

struct ThreadEnd {
  bool registered = true;
  ~ThreadEnd() {
    pages.ended = true;
    retireOwn();
    returnCounted();
  }
};

/// Makes the end of the thread release its pages. Cold.
void watchThreadEnd() {
  thread_local ThreadEnd end;
  pages.watched = end.registered;
}

bool startPage() {
  if (!usesPages || pages.ended) return false;
  if (!pages.watched) watchThreadEnd();
  ItemPage* fresh = SparePages::shared().take();
  retireOwn();
  pages.own = fresh;
  pages.next = reinterpret_cast<std::byte*>(fresh) + firstPiece;
  pages.end = reinterpret_cast<std::byte*>(fresh) + pageSize;
  return true;
}

}  // namespace

std::byte* ItemPages::take(std::size_t size, ItemPage*& page) {
  const std::size_t length = (size + alignment - 1) / alignment * alignment;
  if (static_cast<std::size_t>(pages.end - pages.next) < length) [[unlikely]] {
    if (length > largestPiece || !startPage()) return nullptr;
  }
  std::byte* piece = pages.next;
  pages.next += length;
  ++pages.cut;
  page = pages.own;
  return piece;
}

void ItemPages::giveBack(ItemPage* page) noexcept {
  if (page == pages.returnedTo) [[likely]] {
    ++pages.returned;
    return;
  }
  if (pages.ended) return subtract(page, 1);
  if (!pages.watched) watchThreadEnd();
  returnCounted();
  pages.returnedTo = page;
  pages.returned = 1;
}

void ItemPages::trimSpares() noexcept { SparePages::shared().trim(); }
std::size_t ItemPages::spareCount() noexcept { return SparePages::shared().count(); }

}  // namespace norvik::detail
