// NorvikCore/constants/NKDebuggerAttached.h - whether somebody debugs the application, as the application says.
//
//   NKDebuggerAttached = true;       // from now on the cookie operations print what they delete on the console
//
// False until the application sets it. Nothing here looks for a debugger.
#pragma once  // include time: <atomic>: it is read and set on any threads

#include "NorvikCore/platform/export.h"

#include <atomic>

namespace norvik {

/// A switch that any thread may read and set at any time; reading costs what a plain load costs. Synchronised.
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
