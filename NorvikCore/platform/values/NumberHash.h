// NorvikCore/platform/values/NumberHash.h - one hash across booleans, integers, doubles and decimals.
//
//   numberHash(5) == numberHash(5.0) && numberHash(5.0) == numberHash(5.00_dec);   // true
//
// Numbers that are equal as decimals have one hash; true is 1. Decimal(double) says which decimal a double is.
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

/// A double that no decimal can be has a hash of its own, every not-a-number the same.
[[nodiscard]] NK_EXPORT std::size_t numberHash(double value) noexcept;

}  // namespace norvik
