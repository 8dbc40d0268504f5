// NorvikCore/linq/ChainElements.h - what passes along a chain of queries, and how closures are called with it. Users
// need not read it.
//
// Over an array an element is a Value, or something plain that a selector gave: a number, a date, a text. Over a range
// of the user's it is whatever the range holds.
#pragma once

#include "NorvikCore/linq/LINQQueries.h"

#include <type_traits>
#include <utility>

namespace norvik::detail {

template <class E>
consteval bool becomesValue() {
  if constexpr (std::is_base_of_v<NSObject, E> || std::is_null_pointer_v<E> || std::is_constructible_v<Value, const E&>)
    return true;
  else
    return ValueConvertible<E> && !isCharacter<E>;
}

/// As an array holds it.
template <class E>
Value asElement(const E& element) {
  static_assert(becomesValue<E>(), "this query needs elements that become Values: linq_select what becomes one first");
  if constexpr (std::is_base_of_v<NSObject, E>)
    return ref(const_cast<E&>(element));
  else if constexpr (std::is_same_v<E, Value>)
    return orNull(element);
  else if constexpr (becomesValue<E>())
    return orNull(valueOf(element));
  __builtin_unreachable();
}

/// What a selector gave, as an element of a chain: a Value unless it is plain or, in a chain over a range of the
/// user's, something that is never absent.
template <bool ofValues, class R>
auto element(R result) {
  constexpr bool canBeNothing = std::is_null_pointer_v<R> || std::is_same_v<R, Value> || requires {
    result.has_value();
  }
  || std::is_convertible_v<R, Ref<NSObject>>;
  if constexpr (isPlain<R>)
    return result;
  else if constexpr (ofValues || (canBeNothing && becomesValue<R>()))
    return orNull(valueOf(std::move(result)));
  else
    return result;
}

/// Calls a closure with an element.
template <bool ofValues, class F, class E>
decltype(auto) callWith(F& closure, const E& element) {
  using P = typename ParametersOf<F>::Type;
  using Wanted = typename FirstOf<P>::Type;
  if constexpr (std::is_same_v<E, Value>) {
    return callWith(closure, element);
  } else if constexpr (std::is_void_v<P>) {
    if constexpr (ofValues)
      return call(closure, asElement(element));
    else
      return resultOf(closure, element);
  } else if constexpr (std::is_invocable_v<F&, const E&> && (!isPlain<E> || std::is_same_v<E, Wanted>)) {
    return resultOf(closure, element);
  } else {
    return call(closure, asElement(element));
  }
}
template <bool ofValues, class F, class E>
bool testWith(F& predicate, const E& element) {
  constexpr bool isAnswer = std::is_convertible_v<decltype(callWith<ofValues>(predicate, element)), bool>;
  static_assert(isAnswer, "a predicate answers with a bool");
  return static_cast<bool>(callWith<ofValues>(predicate, element));
}

/// Asked before an element of the source is used that a closure was called with.
struct ArrayGuard {
  const NSArray::const_iterator& at;
  /// Raises NSGenericException where the array was changed.
  void check() const {
    auto next = at;
    ++next;
  }
};
struct NoGuard {
  void check() const noexcept {}
};

}  // namespace norvik::detail
