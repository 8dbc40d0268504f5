// NorvikCore/platform/dispatch/internal/ForkAware.h - what a child made by fork() has to put right.
//
// Only the thread that called fork() goes on in the child. Blocks that other threads were running there, or that waited
// for one, are never run in the child; so that nobody waits for them, everything that can be busy is set back to idle,
// save what the forking thread itself holds. The dropped blocks are not destroyed: what they hold is the parent's.
#pragma once

namespace norvik::detail {

/// Registered from construction to destruction.
class ForkAware {
 public:
  ForkAware();
  virtual ~ForkAware();
  ForkAware(const ForkAware&) = delete;
  ForkAware& operator=(const ForkAware&) = delete;

  /// In the child, on its only thread, before fork() returns there.
  virtual void resetAfterFork() noexcept = 0;

 private:
  friend class ForkRegistry;
  ForkAware* previous_ = nullptr;
  ForkAware* next_ = nullptr;
};

}  // namespace norvik::detail
