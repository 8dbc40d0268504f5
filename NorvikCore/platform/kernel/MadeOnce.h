// NorvikCore/platform/kernel/MadeOnce.h - objects that the process has one of, made when they are first asked for.
//
//   Registry& registry() {
//     return kernel::madeOnce([] { return new Registry; });
//   }
//
// A function-local static does the same, except that a fork does not wait for it: a child of a process in which another
// thread was making it would wait for that thread until it ends. So the library has none (tools/statics).
//
// Threads: synchronised. Cost: one load once it is made.
#pragma once

#include "NorvikCore/platform/kernel/Fork.h"

#include <atomic>
#include <type_traits>

namespace norvik::kernel {

/// What `make` returns a pointer to, for the life of the process; null is not allowed. `make` is a lambda: each has an
/// object of its own. What it raises passes, and the next call makes the object.
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
