// NorvikCore/linq/ChainElements.h - the elements of a chain of queries, and how closures are called with them. Users
// need not read it.
//
// An element of a chain over an array is a Value, or a plain number, date or text that a selector returned. An element
// of a chain over another range has the type of the range's elements or of a selector's results.
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

/// Converts an element to the Value that an array would hold.
template <class E>
Value asElement(const E& element) {
  static_assert(becomesValue<E>(),
                "this query needs elements that convert to Value: convert them by linq_select first");
  if constexpr (std::is_base_of_v<NSObject, E>)
    return ref(const_cast<E&>(element));
  else if constexpr (std::is_same_v<E, Value>)
    return orNull(element);
  else if constexpr (becomesValue<E>())
    return orNull(valueOf(element));
  __builtin_unreachable();
}

/// Converts a selector's result to an element of a chain. The element is a Value, unless the result is plain or, in a
/// chain over another range than an array, of a type that is never absent.
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

/// Checks that a closure has not changed the source array, before the element with which the closure was called is
/// used.
struct ArrayGuard {
  const NSArray::const_iterator& at;
  /// Raises NSGenericException if the array was changed.
  void check() const {
    auto next = at;
    ++next;
  }
};
struct NoGuard {
  void check() const noexcept {}
};

}  // namespace norvik::detail
