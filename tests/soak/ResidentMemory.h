// tests/soak/ResidentMemory.h - samples the process's resident memory over time, and tells whether it stayed flat.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace norvik::test {

class ResidentMemory {
 public:
  /// For a run of `seconds`. Allocates the memory for the samples, so that sampling allocates none.
  ResidentMemory(int seconds, std::size_t mostSamples) : seconds_(seconds) { samples_.reserve(mostSamples); }

  void sample() {
    if (samples_.size() == samples_.capacity()) return;
    std::array<char, 128> text{};
    const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    const ssize_t count = read(file, text.data(), text.size() - 1);
    close(file);
    if (count <= 0) return;
    char* at = text.data();
    std::strtoull(at, &at, 10);  // the total size; the resident size follows
    samples_.push_back(std::strtoull(at, nullptr, 10) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)));
  }

  [[nodiscard]] std::size_t count() const { return samples_.size(); }
  /// The median of the second, and of the last, quarter of the samples, in bytes.
  [[nodiscard]] std::uint64_t secondQuarter() const { return medianOf(samples_.size() / 4, samples_.size() / 2); }
  [[nodiscard]] std::uint64_t lastQuarter() const { return medianOf(samples_.size() * 3 / 4, samples_.size()); }
  /// How much the last quarter may exceed the second one: 4 MiB and a fiftieth, for arenas and caches that still grow a
  /// little; 16 MiB in a run of less than a minute, in which they are still filling. In a run of ten minutes, 300
  /// seconds lie between the two quarters, so with 16 MiB resident a growth of 15 KB a second is detected.
  [[nodiscard]] std::uint64_t bound() const {
    const std::uint64_t settling = seconds_ < 60 ? 16 : 4;
    return (settling << 20) + secondQuarter() / 50;
  }
  [[nodiscard]] bool isFlat() const { return lastQuarter() <= secondQuarter() + bound(); }

 private:
  [[nodiscard]] std::uint64_t medianOf(std::size_t begin, std::size_t end) const {
    std::vector<std::uint64_t> part(samples_.begin() + static_cast<std::ptrdiff_t>(begin),
                                    samples_.begin() + static_cast<std::ptrdiff_t>(end));
    if (part.empty()) return 0;
    const auto middle = part.begin() + static_cast<std::ptrdiff_t>(part.size() / 2);
    std::nth_element(part.begin(), middle, part.end());
    return *middle;
  }

  const int seconds_;
  std::vector<std::uint64_t> samples_;
};

}  // namespace norvik::test
