// NorvikCore/platform/kernel/internal/Prefetch.h - asks the processor for memory before it is needed.
//
// In assembler, for g++ takes a function that does nothing but __builtin_prefetch for one without effect, and leaves
// its calls out; and because __builtin_prefetch asks for a line to write to only where -mprfchw allows the instruction,
// which 64-bit processors that lack it pass over.
#pragma once

namespace norvik::kernel {

/// For one line of memory that is about to be written: it leaves the caches of the other processors.
inline void prefetchForWrite(const void* memory) noexcept {
#if defined(__x86_64__)
  __asm__ volatile("prefetchw %0" : : "m"(*static_cast<const char*>(memory)));
#else
  __builtin_prefetch(memory, 1);
#endif
}

}  // namespace norvik::kernel
