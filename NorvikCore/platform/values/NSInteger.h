// NorvikCore/platform/values/NSInteger.h - the platform's integers: 64 bits on every machine.
#pragma once

#include "NorvikCore/platform/export.h"  // rejects language versions below C++20 with one error

#include <concepts>
#include <cstdint>

namespace norvik {

namespace detail {

template <class T>
inline constexpr bool isCharacter = std::same_as<T, char> || std::same_as<T, char8_t> || std::same_as<T, char16_t> ||
                                    std::same_as<T, char32_t> || std::same_as<T, wchar_t>;

/// An integer type for numbers: neither boolean nor character. std::int8_t is one.
template <class T>
concept WholeNumber = std::integral<T> && sizeof(T) <= 8 && !std::same_as<T, bool> && !isCharacter<T>;

}  // namespace detail

using NSInteger = std::int64_t;
using NSUInteger = std::uint64_t;

/// The position that means "not found". It fits both integer types.
inline constexpr NSUInteger NSNotFound = INT64_MAX;

}  // namespace norvik
