// NorvikCore/platform/values/NumberOrder.h - one order and one equality across booleans, integers, doubles and
// decimals.
//
//   numberEqual(5, 5.00_dec) && numberEqual(0.1, 0.1_dec);      // true
//   numberCompare(9007199254740993, 9007199254740992.0);        // greater: no digit is lost
//
// Numbers compare by their exact value, so the order is total and transitive, and equal numbers have the same
// numberHash. A double has the value of the decimal that Decimal(double) makes of it: a whole number below 2^64 has its
// own value, any other number the shortest digits that read back as the same double. So 0.1 equals 0.1_dec, and not the
// 55 digits of its exact binary value. Doubles beyond the range of decimals, including the infinities, keep their place
// in the order. Not-a-number equals itself, in any type, and precedes every number; true is 1.
//
// Every function is pure and safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NumberHash.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <utility>

namespace norvik {

namespace detail {

template <std::integral Integer>
[[nodiscard]] constexpr auto widened(Integer value) noexcept {
  if constexpr (std::signed_integral<Integer> || sizeof(Integer) < 8) {
    return static_cast<std::int64_t>(value);
  } else {
    return static_cast<std::uint64_t>(value);
  }
}

[[nodiscard]] NK_EXPORT std::weak_ordering compareDoubleWithInteger(double a, std::int64_t b) noexcept;
[[nodiscard]] NK_EXPORT std::weak_ordering compareDoubleWithInteger(double a, std::uint64_t b) noexcept;

}  // namespace detail

template <std::integral A, std::integral B>
[[nodiscard]] constexpr std::weak_ordering numberCompare(A a, B b) noexcept {
  const auto x = detail::widened(a);
  const auto y = detail::widened(b);
  return std::cmp_less(x, y)    ? std::weak_ordering::less
         : std::cmp_equal(x, y) ? std::weak_ordering::equivalent
                                : std::weak_ordering::greater;
}

[[nodiscard]] constexpr std::weak_ordering numberCompare(double a, double b) noexcept {
  if (a < b) return std::weak_ordering::less;
  if (a > b) return std::weak_ordering::greater;
  return (b != b) <=> (a != a);  // not-a-number first
}

[[nodiscard]] inline std::weak_ordering numberCompare(const Decimal& a, const Decimal& b) noexcept { return a <=> b; }

template <std::integral Integer>
[[nodiscard]] std::weak_ordering numberCompare(double a, Integer b) noexcept {
  return detail::compareDoubleWithInteger(a, detail::widened(b));
}
template <std::integral Integer>
[[nodiscard]] std::weak_ordering numberCompare(Integer a, double b) noexcept {
  return 0 <=> numberCompare(b, a);
}

template <std::integral Integer>
[[nodiscard]] std::weak_ordering numberCompare(const Decimal& a, Integer b) noexcept {
  return a <=> Decimal(b);
}
template <std::integral Integer>
[[nodiscard]] std::weak_ordering numberCompare(Integer a, const Decimal& b) noexcept {
  return Decimal(a) <=> b;
}

[[nodiscard]] NK_EXPORT std::weak_ordering numberCompare(double a, const Decimal& b) noexcept;
[[nodiscard]] inline std::weak_ordering numberCompare(const Decimal& a, double b) noexcept {
  return 0 <=> numberCompare(b, a);
}

template <class A, class B>
[[nodiscard]] bool numberEqual(const A& a, const B& b) noexcept {
  return numberCompare(a, b) == 0;
}

}  // namespace norvik
