// NorvikCore/linq/Closure.h - how a query calls its closures. Users need not read it.
//
// A closure takes an element as a `const Value&` or as the type that the element holds: `[](const Payslip& p)`,
// `[](Decimal amount)`, `&Payslip::grossPay`. An element of another type raises NSInvalidArgumentException. A closure
// with a parameter of generic type (`const auto&`) is called with the Value.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/object/ClosureParameters.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <cstddef>
#include <functional>
#include <span>
#include <type_traits>
#include <utility>

namespace norvik::detail {

/// Raises NSInvalidArgumentException, because `operation` needs a closure and was given none.
[[noreturn]] NK_EXPORT void raiseNoClosure(const char* operation);

/// Raises NSInvalidArgumentException if `source`, with which a chain begins, is null.
NK_EXPORT void checkSource(const NSObject* source);

template <class F>
void checkClosure(const F& closure, const char* operation) {
  if (isAbsent(closure)) [[unlikely]]
    raiseNoClosure(operation);
}

/// Raises NSInvalidArgumentException for a null pointer to a member.
template <class F>
void checkAccessor([[maybe_unused]] const F& closure) {
  if constexpr (std::is_member_pointer_v<F>) {
    if (closure == nullptr) [[unlikely]]
      raiseNoClosure("a query");
  }
}

/// Converts the element to the type of a closure's parameter P. Returns a reference if the element holds exactly that
/// type.
template <class P>
decltype(auto) argument(const Value& element) {
  if constexpr (std::is_base_of_v<NSObject, std::remove_cvref_t<P>>)
    return elementAs<std::remove_cvref_t<P>>(element);
  else
    return argumentFrom<P>(element);
}

/// Returns a closure's result as a value with its own lifetime; a reference to an object becomes a Ref.
template <class R>
auto owned(R&& result) {
  using T = std::remove_cvref_t<R>;
  if constexpr (std::is_base_of_v<NSObject, T>)
    return Ref<T>(const_cast<T*>(&result));
  else
    return T(std::forward<R>(result));
}

/// Calls the closure with Values, each converted to the type of its parameter.
template <class F, class... V>
auto call(F& closure, const V&... elements) {
  using P = typename ParametersOf<std::decay_t<F>>::Type;
  checkAccessor(closure);
  if constexpr (std::is_void_v<P>) {
    return owned(std::invoke(closure, elements...));
  } else {
    constexpr bool isItsCount = P::count == sizeof...(V);
    static_assert(isItsCount, "the query calls this closure with another number of arguments");
    if constexpr (isItsCount) {
      return [&]<class... Parameter>(const Parameters<Parameter...>&) {
        return owned(std::invoke(closure, argument<Parameter>(elements)...));
      }(P());
    }
  }
}

template <class F, class... V>
bool test(F& predicate, const V&... elements) {
  constexpr bool isAnswer = std::is_convertible_v<decltype(call(predicate, elements...)), bool>;
  static_assert(isAnswer, "a predicate answers with a bool");
  if constexpr (isAnswer) return static_cast<bool>(call(predicate, elements...));
  __builtin_unreachable();
}

/// Converts a closure's result to a Value, which is absent if the result is nullptr or nothing.
template <class R>
Value valueOf(R&& result) {
  using T = std::remove_cvref_t<R>;
  if constexpr (std::is_null_pointer_v<T>) {
    return {};
  } else if constexpr (std::is_constructible_v<Value, R>) {
    return Value(std::forward<R>(result));
  } else {
    constexpr bool becomesValue = ValueConvertible<T> && !isCharacter<T>;
    static_assert(becomesValue, "the result of a query's closure must convert to Value: return an object by its Ref");
    if constexpr (becomesValue) return ValueConversion<T>::toValue(result);
    __builtin_unreachable();
  }
}
template <class F, class... V>
Value valueFrom(F& closure, const V&... elements) {
  return valueOf(call(closure, elements...));
}

inline Value orNull(Value value) { return value.isAbsent() ? Value::null() : std::move(value); }

/// True for types that a chain passes on as they are, because a Value of them would only wrap them.
template <class E>
inline constexpr bool isPlain = (std::is_arithmetic_v<E> && !isCharacter<E> && std::is_constructible_v<Value, E>) ||
                                std::is_same_v<E, Decimal> || std::is_same_v<E, Date> || std::is_same_v<E, NSString>;

/// Calls the closure with an argument that outlives the call. A plain value to which the closure returns a reference is
/// not copied.
template <class F, class A>
decltype(auto) resultOf(F& closure, A& argument) {
  using R = std::invoke_result_t<F&, A&>;
  using T = std::remove_cvref_t<R>;
  checkAccessor(closure);
  if constexpr (std::is_lvalue_reference_v<R> && isPlain<T>)
    return static_cast<const T&>(std::invoke(closure, argument));
  else
    return owned(std::invoke(closure, argument));
}

template <class P>
struct FirstOf {
  using Type = void;
};
template <class First, class... Others>
struct FirstOf<Parameters<First, Others...>> {
  using Type = std::remove_cvref_t<First>;
};

/// Calls a closure with an element of a collection.
template <class F>
decltype(auto) callWith(F& closure, const Value& element) {
  using Wanted = typename FirstOf<typename ParametersOf<std::decay_t<F>>::Type>::Type;
  if constexpr (std::is_base_of_v<NSObject, Wanted>)
    return resultOf(closure, elementAs<Wanted>(element));
  else
    return call(closure, element);
}

/// Prefetches the object of the element 24 places after `at`, so that it is in the cache when a query reaches it. It
/// fetches two cache lines, because most objects are not larger. It is always inline, because the compiler removes
/// calls of a function whose only effect is a prefetch.
[[gnu::always_inline]] inline void prefetchObject(const NSArray& array, std::size_t at) noexcept {
  constexpr std::size_t ahead = 24, line = 64;
  if (at + ahead >= array.count()) return;
  const auto* object = reinterpret_cast<const char*>(array[at + ahead].object());
  if (!object) return;
  __builtin_prefetch(object);
  __builtin_prefetch(object + line);
}

/// Calls ask(element) and then use(element, answer) for each element of a collection, until `use` returns false. If
/// `ask` changed the collection, NSGenericException is raised before `use` is called.
template <class Collection, class Ask, class Use>
void walk(const Collection& collection, Ask&& ask, Use&& use) {
  const Ref<const Collection> kept(&collection);
  [[maybe_unused]] std::size_t index = 0;
  for (auto at = collection.begin(), end = collection.end(); at != end;) {
    const auto& element = *at;
    if constexpr (std::is_base_of_v<NSArray, Collection>) prefetchObject(collection, index++);
    decltype(auto) answer = ask(element);
    ++at;
    if (!use(element, std::forward<decltype(answer)>(answer))) return;
  }
}

}  // namespace norvik::detail
