// NorvikCore/platform/kernel/MadeOnce.h - objects that exist once in the process, made at their first use.
//
//   Registry& registry() {
//     return kernel::madeOnce([] { return new Registry; });
//   }
//
// A function-local static does the same, except that a fork does not wait for it: if another thread was making it
// during the fork, the child would wait for that thread without end. So the library has none (tools/statics).
//
// Threads: synchronised. Cost: one load once the object is made.
#pragma once

#include "NorvikCore/platform/kernel/Fork.h"

#include <atomic>
#include <type_traits>

namespace norvik::kernel {

/// The object that `make` returns a pointer to, kept until the process ends; null is not allowed. `make` is a lambda:
/// each lambda has an object of its own. If `make` raises, the exception passes, and the next call makes the object.
template <class Make>
[[nodiscard]] auto& madeOnce(Make make) {
  using Made = std::remove_pointer_t<std::invoke_result_t<Make>>;
  static constinit std::atomic<Made*> known{nullptr};
  if (Made* present = known.load(std::memory_order_acquire)) [[likely]]
    return *present;
  const ForkHold hold;
  static Made& made = *make();
  known.store(&made, std::memory_order_release);
  return made;
}

}  // namespace norvik::kernel
