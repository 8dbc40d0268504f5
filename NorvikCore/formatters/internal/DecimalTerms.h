// NorvikCore/formatters/internal/DecimalTerms.h - the bounds that a formatter class gives to new formatters.
#pragma once

#include "NorvikCore/formatters/NKDecimalFormatter.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <utility>

namespace norvik::detail {

class DecimalTerms {
 public:
  void define(std::optional<Decimal> maximum, std::optional<Decimal> minimum) NK_EXCLUDES(mutex_) {
    MutexLock lock(mutex_);
    maximum_ = maximum;
    minimum_ = minimum;
  }

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
};

}  // namespace norvik::detail
