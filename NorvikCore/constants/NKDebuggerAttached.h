// NorvikCore/constants/NKDebuggerAttached.h - a switch by which the application says that it is being debugged.
//
//   NKDebuggerAttached = true;       // after this, cookie operations print on the console which cookies they delete
//
// False until the application sets it. The library does not check for a debugger.
#pragma once  // include time: <atomic>: it is read and set on any threads

#include "NorvikCore/platform/export.h"

#include <atomic>

namespace norvik {

/// A switch that any thread may read and set at any time. A read costs as much as a plain load. Synchronised.
class AtomicSwitch {
 public:
  constexpr explicit AtomicSwitch(bool isOn) noexcept : isOn_(isOn) {}
  AtomicSwitch(const AtomicSwitch&) = delete;
  AtomicSwitch& operator=(const AtomicSwitch&) = delete;
  ~AtomicSwitch() = default;

  operator bool() const noexcept {  // NOLINT(google-explicit-constructor): it reads as the boolean that it is
    return isOn_.load(std::memory_order_relaxed);
  }
  AtomicSwitch& operator=(bool isOn) noexcept {
    isOn_.store(isOn, std::memory_order_relaxed);
    return *this;
  }

 private:
  std::atomic<bool> isOn_;
};

NK_EXPORT extern AtomicSwitch NKDebuggerAttached;

}  // namespace norvik
