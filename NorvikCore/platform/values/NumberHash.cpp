#include "NorvikCore/platform/values/NumberHash.h"

#include <functional>

namespace norvik {

std::size_t numberHash(double value) noexcept {
  // A fast path for integers, the most frequently hashed doubles; they need no conversion to text.
  if (value >= -9e15 && value <= 9e15) {
    const auto whole = static_cast<std::int64_t>(value);
    if (static_cast<double>(whole) == value) return Decimal(whole).hash();
  }
  const Decimal decimal(value);
  if (decimal.isNaN() && value == value) return std::hash<double>{}(value);
  return decimal.hash();
}

}  // namespace norvik
