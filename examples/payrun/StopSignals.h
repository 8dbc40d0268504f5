// examples/payrun/StopSignals.h - SIGINT and SIGTERM as a descriptor to poll, so that a program can end in order.
#pragma once

#include <csignal>

namespace payrun {

/// While it exists, the two signals interrupt nothing. Create it on the main thread before any other thread starts,
/// because a signal is delivered to any thread that has not blocked it.
class StopSignals {
 public:
  /// Throws std::system_error.
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  /// Readable after a signal; owned by this object.
  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// The signal that was received, or 0.
  int take();

 private:
  sigset_t before_{};
  int descriptor_ = -1;
};

}  // namespace payrun
