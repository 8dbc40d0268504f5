// examples/payrun/ProgressBar.h - how far a long task is, on a terminal only.
#pragma once

#include <cstddef>
#include <string>

namespace payrun {

/// Draws on standard error where that is a terminal, and does nothing where it is not. Leaves an empty line behind.
class ProgressBar {
 public:
  ProgressBar(std::string what, std::size_t total);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// Draws only when the percentage changes: cheap enough to be called for every record.
  void show(std::size_t done) {
    if (done >= nextChange_) draw(done);
  }

 private:
  void draw(std::size_t done);

  std::string what_;
  std::size_t total_;
  std::size_t nextChange_;  // the least `done` that draws another percentage
  bool visible_;
};

}  // namespace payrun
