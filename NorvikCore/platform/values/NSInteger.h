// NorvikCore/platform/values/NSInteger.h - the platform's integers: 64 bits on every machine.
#pragma once

#include "NorvikCore/platform/export.h"  // refuses less than C++20 with a sentence

#include <concepts>
#include <cstdint>

namespace norvik {

namespace detail {

template <class T>
inline constexpr bool isCharacter = std::same_as<T, char> || std::same_as<T, char8_t> || std::same_as<T, char16_t> ||
                                    std::same_as<T, char32_t> || std::same_as<T, wchar_t>;

/// An integer that stands for a number: neither a boolean nor a character. std::int8_t is one.
template <class T>
concept WholeNumber = std::integral<T> && sizeof(T) <= 8 && !std::same_as<T, bool> && !isCharacter<T>;

}  // namespace detail

using NSInteger = std::int64_t;
using NSUInteger = std::uint64_t;

/// The place of what was not found. It fits both integers.
inline constexpr NSUInteger NSNotFound = INT64_MAX;

}  // namespace norvik
