#include "NorvikCore/platform/values/NumberOrder.h"

namespace norvik {
namespace {

/// `limit` is the power of two just above the range of Integer. Both ends are exact as doubles.
template <class Integer>
std::weak_ordering compareWithin(double a, Integer b, double lowest, double limit) noexcept {
  if (!(a >= lowest)) return std::weak_ordering::less;  // also for not-a-number
  if (a >= limit) return std::weak_ordering::greater;
  const auto whole = static_cast<Integer>(a);
  if (whole != b) return whole <=> b;
  return numberCompare(a, static_cast<double>(whole));
}

}  // namespace

std::weak_ordering detail::compareDoubleWithInteger(double a, std::int64_t b) noexcept {
  return compareWithin(a, b, -0x1p63, 0x1p63);
}

std::weak_ordering detail::compareDoubleWithInteger(double a, std::uint64_t b) noexcept {
  return compareWithin(a, b, 0, 0x1p64);
}

std::weak_ordering numberCompare(double a, const Decimal& b) noexcept {
  const Decimal decimal(a);
  if (decimal.isNaN() && a == a) {  // outside the range of decimals
    return b.isNaN() || a > 0 ? std::weak_ordering::greater : std::weak_ordering::less;
  }
  const std::weak_ordering order = decimal <=> b;
  if (order != 0 || a != a) return order;
  // Near zero a decimal cannot hold all digits of a double, so the double may differ slightly from its decimal.
  return numberCompare(a, decimal.doubleValue());
}

}  // namespace norvik
