// NorvikCore/platform/kernel/internal/Prefetch.h - prefetches memory before it is needed.
//
// In assembler, for two reasons. g++ treats a function that contains only __builtin_prefetch as having no effect and
// removes its calls. And __builtin_prefetch requests a line for writing only if -mprfchw permits the instruction, which
// 64-bit processors without it ignore.
#pragma once

namespace norvik::kernel {

/// For one cache line that is about to be written: it is removed from the caches of the other processors.
inline void prefetchForWrite(const void* memory) noexcept {
#if defined(__x86_64__)
  __asm__ volatile("prefetchw %0" : : "m"(*static_cast<const char*>(memory)));
#else
  __builtin_prefetch(memory, 1);
#endif
}

}  // namespace norvik::kernel
