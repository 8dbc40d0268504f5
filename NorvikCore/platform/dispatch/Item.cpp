#include "NorvikCore/platform/dispatch/Item.h"

#include "NorvikCore/platform/dispatch/internal/ItemPages.h"

#include <new>

namespace norvik::detail {
namespace {

// Precedes every item: the page of the item; null if the item is on the heap.
struct Header {
  ItemPage* page;
};
// Gives the item after it the alignment of the heap.
constexpr std::size_t headerSpace = alignof(std::max_align_t);

Header* headerOf(void* item) { return static_cast<Header*>(item) - 1; }

void* allocateFromHeap(std::size_t size) {
  auto* memory = static_cast<std::byte*>(::operator new(headerSpace + size));
  return memory + headerSpace;
}

}  // namespace

void* allocateItem(std::size_t size, ItemLife life) {
  ItemPage* page = nullptr;
  void* item = nullptr;
  if (life == ItemLife::brief) {
    std::byte* piece = ItemPages::take(sizeof(Header) + size, page);
    if (piece != nullptr) item = piece + sizeof(Header);
  }
  if (item == nullptr) item = allocateFromHeap(size);
  ::new (headerOf(item)) Header{page};
  return item;
}

void freeItem(void* item) noexcept {
  ItemPage* page = headerOf(item)->page;
  if (page != nullptr) [[likely]]
    return ItemPages::giveBack(page);
  ::operator delete(static_cast<std::byte*>(item) - headerSpace);
}

}  // namespace norvik::detail
