#include "NorvikCore/platform/dispatch/Item.h"

namespace norvik::detail {

void* allocateItem(std::size_t size) { return ::operator new(size); }

void freeItem(void* memory, std::size_t size) noexcept { ::operator delete(memory, size); }

}  // namespace norvik::detail
