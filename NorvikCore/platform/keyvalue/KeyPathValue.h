// NorvikCore/platform/keyvalue/KeyPathValue.h - whether a closure takes the value that a KeyPath leads to: compile-time
// checks of observations and bindings. Users need not read it.
#pragma once

#include "NorvikCore/platform/keyvalue/KeyPath.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <type_traits>

namespace norvik::detail {

/// True if a T converts to the parameter P without loss.
template <class P, class T>
consteval bool takes() {
  using Taken = std::remove_cvref_t<P>;
  if constexpr (std::is_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>)
    return false;
  else if constexpr (std::is_same_v<T, Value>)
    return GivenByValue<Taken>;
  else
    return std::is_same_v<Taken, Value> || std::is_same_v<Taken, T> ||
           (std::is_convertible_v<const T&, Taken> && requires(const T& content) { Taken{content}; });
}

/// True if the parameter would take the value, if the value could not be absent.
template <class P, class T>
inline constexpr bool forgetsAbsence = false;
template <class P, class T>
inline constexpr bool forgetsAbsence<P, std::optional<T>> = !takes<P, std::optional<T>>() && takes<P, T>();

/// Checks that a closure's parameter P takes a value of type T.
template <class P, class T>
consteval bool isValueParameter() {
  constexpr bool takesAbsence = !forgetsAbsence<P, T>;
  constexpr bool takesValue = takes<P, T>();
  static_assert(takesAbsence, "the value may be absent: the closure takes it as a std::optional");
  static_assert(takesValue || !takesAbsence, "the closure takes the value as another type than the key path leads to");
  return takesAbsence && takesValue;
}

/// Checks that a path from `Root` is a path of an `Object`.
template <class Object, class Root>
consteval bool startsHere() {
  constexpr bool hasProperty = std::is_base_of_v<Root, Object>;
  static_assert(hasProperty,
                "the object does not have the key path's first property: the path starts from another class");
  return hasProperty;
}

}  // namespace norvik::detail
