// NorvikCore/platform/dispatch/internal/ForkAware.h - objects that a child made by fork() must reset.
//
// Only the thread that called fork() continues in the child. Blocks that other threads were running, or that waited for
// one, never run in the child. So that no thread waits for them, everything that can be busy is reset to idle, except
// what the forking thread itself holds. The dropped blocks are not destroyed, because what they hold belongs to the
// parent.
#pragma once

#include "NorvikCore/platform/export.h"

#include "NorvikCore/platform/kernel/Fork.h"

#include <atomic>
#include <utility>

namespace norvik::detail {

/// Registered from watchForks() to unwatchForks(). Call these after the construction and before the destruction,
/// because another thread may fork at any moment.
class NK_EXPORT_FOR_TESTS ForkAware {
 public:
  ForkAware() = default;
  virtual ~ForkAware() = default;
  ForkAware(const ForkAware&) = delete;
  ForkAware& operator=(const ForkAware&) = delete;

  void watchForks();
  void unwatchForks() noexcept;

  /// Called in the child, on its only thread, before fork() returns there.
  virtual void resetAfterFork() noexcept = 0;

 private:
  friend class ForkRegistry;
  ForkAware* previous_ = nullptr;
  ForkAware* next_ = nullptr;
};

/// A new, registered object. Destroy it with deleteForkAware().
template <class T, class... Arguments>
[[nodiscard]] T* newForkAware(Arguments&&... arguments) {
  T* object = new T(std::forward<Arguments>(arguments)...);
  object->watchForks();
  return object;
}
template <class T>
void deleteForkAware(T* object) noexcept {
  object->unwatchForks();
  delete object;
}

/// The only T of the process, which the first call makes with `make`. A fork waits until it is made; otherwise a child
/// could wait without end for the thread that was making it.
template <class T, class Make>
[[nodiscard]] T& sharedForkAware(Make make) {
  static constinit std::atomic<T*> known{nullptr};
  if (T* present = known.load(std::memory_order_acquire)) [[likely]]
    return *present;
  const kernel::ForkHold hold;
  static T& made = [&make]() -> T& {
    T* object = make();
    object->watchForks();
    return *object;
  }();
  known.store(&made, std::memory_order_release);
  return made;
}

}  // namespace norvik::detail
