// NorvikCore/platform/values/NumberHash.h - one hash function for booleans, integers, doubles and decimals.
//
//   numberHash(5) == numberHash(5.0) && numberHash(5.0) == numberHash(5.00_dec);   // true
//
// Numbers that are equal as decimals have the same hash; true is 1. Decimal(double) defines which decimal a double is.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <concepts>
#include <cstddef>

namespace norvik {

[[nodiscard]] inline std::size_t numberHash(const Decimal& value) noexcept { return value.hash(); }

template <std::integral Integer>
[[nodiscard]] std::size_t numberHash(Integer value) noexcept {
  return Decimal(value).hash();
}

/// A double that no decimal can represent has a hash of its own. All values of not-a-number have the same hash.
[[nodiscard]] NK_EXPORT std::size_t numberHash(double value) noexcept;

}  // namespace norvik
