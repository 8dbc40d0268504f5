// NorvikCore/platform/object/StatedSuperclass.h - finds the nearest superclass that has an NK_OBJECT, so that a wrong
// argument of NK_OBJECT is rejected.
//
// Each class with an NK_OBJECT declares a friend nk_stated_, whose parameter is a pointer to it. A call with a pointer
// to an object chooses the nearest such class, other than its own.
#pragma once

#include "NorvikCore/platform/export.h"  // rejects language versions below C++20 with one error

namespace norvik::detail {

template <class T>
struct StatedClass {};

/// The argument of a call for the nearest class above T.
template <class T>
struct Above {};

/// Accepts every such call except that for the nearest class above T.
template <class T>
struct NotAbove {
  template <class U>
  requires(!__is_same(T, U))
      NotAbove(Above<U>);  // NOLINT(google-explicit-constructor): the conversion is what it is for
};

/// The result for a class that does not derive from NSObject.
struct NoStatedClass {};
NoStatedClass nk_stated_(const void*, ...);

template <class T, class Below>
using NearestStated = decltype(nk_stated_(static_cast<const T*>(nullptr), Above<Below>()));

struct UnknownType;

/// True if Super, or the nearest class above it that has an NK_OBJECT, is the nearest such class above T. Also true if
/// T does not derive from NSObject or is broken, because the compiler has reported that already.
template <class T, class Super>
inline constexpr bool isNearestStated = __is_same(T, UnknownType) || __is_same(Super, UnknownType) ||
                                        (!__is_same(T, Super) &&
                                         (__is_same(NearestStated<T, T>, NearestStated<Super, T>) ||
                                          __is_same(NearestStated<T, T>, NoStatedClass)));

}  // namespace norvik::detail
