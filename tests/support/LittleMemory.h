// tests/support/LittleMemory.h - limits the memory of a piece of code. Only one source file of a program includes this,
// because it replaces operator new.
//
//   bool wasRefused = true;
//   for (int granted = 0; wasRefused; ++granted) {
//     const test::LittleMemory memory(granted);      // for this thread, while it lives
//     logger.logMessage(message);
//     wasRefused = memory.wasRefused();
//   }
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace norvik::test {

class LittleMemory {
 public:
  /// The first `granted` requests are granted, and all others are refused.
  explicit LittleMemory(int granted) noexcept {
    refused = false;
    left = granted;
  }
  LittleMemory(const LittleMemory&) = delete;
  LittleMemory& operator=(const LittleMemory&) = delete;
  ~LittleMemory() { left = all; }

  [[nodiscard]] bool wasRefused() const noexcept { return refused; }

  static void* get(std::size_t size) {
    if (left == 0) {
      refused = true;
      throw std::bad_alloc();
    }
    if (left > 0) --left;
    void* const memory = std::malloc(size);
    if (!memory) throw std::bad_alloc();
    return memory;
  }

 private:
  static constexpr int all = -1;
  static inline thread_local int left = all;
  static inline thread_local bool refused = false;
};

}  // namespace norvik::test

// Not inline, because the compiler would warn about free() of memory from operator new.
[[gnu::noinline]] NK_EXPORT void* operator new(std::size_t size) { return norvik::test::LittleMemory::get(size); }
[[gnu::noinline]] NK_EXPORT void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size);
}
[[gnu::noinline]] NK_EXPORT void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] NK_EXPORT void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
