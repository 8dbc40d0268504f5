#include "NorvikCore/platform/dispatch/Item.h"

namespace norvik::detail {

// The heap of the C library is hard to beat here: lists of freed items, passed from the threads that run blocks back to
// those that make them, were slower, for each item then comes out of another processor's cache.

void* allocateItem(std::size_t size) { return ::operator new(size); }

void freeItem(void* memory) noexcept { ::operator delete(memory); }

}  // namespace norvik::detail
