#include "ProgressBar.h"

#include <unistd.h>

#include <cstdio>
#include <limits>
#include <utility>

namespace payrun {

namespace {

constexpr std::size_t never = std::numeric_limits<std::size_t>::max();

}  // namespace

ProgressBar::ProgressBar(std::string what, std::size_t total)
    : what_(std::move(what)), total_(total), visible_(total > 0 && isatty(STDERR_FILENO) != 0) {
  nextChange_ = visible_ ? 0 : never;
}

ProgressBar::~ProgressBar() {
  if (visible_) std::fputs("\r\033[K", stderr);
}

void ProgressBar::draw(std::size_t done) {
  constexpr std::size_t width = 40;
  const std::size_t percent = done >= total_ ? 100 : done * 100 / total_;
  const std::string bar(percent * width / 100, '#');
  std::fprintf(stderr, "\r%s [%-40s] %3zu %%", what_.c_str(), bar.c_str(), percent);
  std::fflush(stderr);
  nextChange_ = percent >= 100 ? never : (total_ * (percent + 1) + 99) / 100;
}

}  // namespace payrun
