// examples/payrun/StopSignals.h - SIGINT and SIGTERM as something to poll, so that a program ends in its own order.
#pragma once

#include <csignal>

namespace payrun {

/// As long as it lives, the two signals interrupt nothing. Made on the main thread before any other thread starts,
/// since a signal goes to any thread that has not blocked it.
class StopSignals {
 public:
  /// Throws std::system_error.
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  /// Readable once a signal came; owned by this object.
  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// The signal that came, or 0.
  int take();

 private:
  sigset_t before_{};
  int descriptor_ = -1;
};

}  // namespace payrun
