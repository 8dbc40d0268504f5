// NorvikCore/formatters/internal/DecimalTerms.h - the bounds that a formatter class gives to new formatters.
#pragma once

#include "NorvikCore/formatters/NKDecimalFormatter.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <atomic>
#include <cstdint>
#include <utility>

namespace norvik::detail {

class DecimalTerms {
 public:
  void define(std::optional<Decimal> maximum, std::optional<Decimal> minimum) NK_EXCLUDES(mutex_) {
    MutexLock lock(mutex_);
    maximum_ = maximum;
    minimum_ = minimum;
    revision_.fetch_add(1, std::memory_order_release);
  }

  /// Differs after each define(). A formatter that was created after a revision was read has the bounds of that
  /// revision or of a later one.
  [[nodiscard]] std::uint64_t revision() const noexcept { return revision_.load(std::memory_order_acquire); }

  /// The settings that the subclasses share: reading gives decimals, the pattern, then the bounds.
  void applyTo(NKDecimalFormatter& formatter, const NSString& pattern) NK_EXCLUDES(mutex_) {
    const auto [maximum, minimum] = terms();
    formatter.setGeneratesDecimalNumbers(true);
    formatter.setFormat(pattern);
    formatter.setMaximum(maximum);
    formatter.setMinimum(minimum);
  }

 private:
  std::pair<std::optional<Decimal>, std::optional<Decimal>> terms() NK_EXCLUDES(mutex_) {
    MutexLock lock(mutex_);
    return {maximum_, minimum_};
  }

  Mutex mutex_;
  std::optional<Decimal> maximum_ NK_GUARDED_BY(mutex_), minimum_ NK_GUARDED_BY(mutex_);
  std::atomic<std::uint64_t> revision_{0};
};

}  // namespace norvik::detail
