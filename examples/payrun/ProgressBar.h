// examples/payrun/ProgressBar.h - the progress of a long task, on a terminal only.
#pragma once

#include <cstddef>
#include <string>

namespace payrun {

/// Draws on standard error if it is a terminal; otherwise it does nothing. The line is empty at the end.
class ProgressBar {
 public:
  ProgressBar(std::string what, std::size_t total);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// Draws only if the percentage changed, so it is cheap enough to be called for every record.
  void show(std::size_t done) {
    if (done >= nextChange_) draw(done);
  }

 private:
  void draw(std::size_t done);

  std::string what_;
  std::size_t total_;
  std::size_t nextChange_;  // the smallest `done` with another percentage
  bool visible_;
};

}  // namespace payrun
