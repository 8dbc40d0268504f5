// NorvikCore/platform/dispatch/internal/ForkAware.h - what a child made by fork() has to put right.
//
// Only the thread that called fork() goes on in the child. Blocks that other threads were running there, or that waited
// for one, are never run in the child; so that nobody waits for them, everything that can be busy is set back to idle,
// save what the forking thread itself holds. The dropped blocks are not destroyed: what they hold is the parent's.
#pragma once

#include "NorvikCore/platform/export.h"

#include "NorvikCore/platform/kernel/Fork.h"

#include <atomic>
#include <utility>

namespace norvik::detail {

/// Registered from watchForks() to unwatchForks(): between the end of the construction and the beginning of the
/// destruction, for another thread may fork at any moment.
class NK_EXPORT ForkAware {
 public:
  ForkAware() = default;
  virtual ~ForkAware() = default;
  ForkAware(const ForkAware&) = delete;
  ForkAware& operator=(const ForkAware&) = delete;

  void watchForks();
  void unwatchForks() noexcept;

  /// In the child, on its only thread, before fork() returns there.
  virtual void resetAfterFork() noexcept = 0;

 private:
  friend class ForkRegistry;
  ForkAware* previous_ = nullptr;
  ForkAware* next_ = nullptr;
};

/// A new object that is registered. deleteForkAware() is its end.
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

/// The one T, which `make` makes when it is first asked for. A fork waits for that: a child would wait for ever for the
/// thread that was at it.
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
