// NorvikCore/linq/Closure.h - how a query calls the closures that it is given. Users need not read it.
//
// A closure takes an element as a `const Value&` or as what it is: `[](const Payslip& p)`, `[](Decimal amount)`,
// `&Payslip::grossPay`. An element that is something else raises NSInvalidArgumentException. A closure whose parameter
// has no type of its own (`const auto&`) takes the Value.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <cstddef>
#include <functional>
#include <span>
#include <type_traits>
#include <utility>

namespace norvik::detail {

template <class... P>
struct Parameters {
  static constexpr std::size_t count = sizeof...(P);
};

/// The parameters of a closure; void where it has several call operators or a template of one.
template <class F>
struct ParametersOf {
  using Type = void;
};
template <class F>
struct ParametersOfCall;
template <class F>
requires requires { &F::operator(); }
struct ParametersOf<F> {
  using Type = typename ParametersOfCall<decltype(&F::operator())>::Type;
};
template <class R, class C, class... P>
struct ParametersOfCall<R (C::*)(P...)> {
  using Type = Parameters<P...>;
};
template <class R, class C, class... P>
struct ParametersOfCall<R (C::*)(P...) noexcept> : ParametersOfCall<R (C::*)(P...)> {};
template <class R, class C, class... P>
struct ParametersOfCall<R (C::*)(P...) const> : ParametersOfCall<R (C::*)(P...)> {};
template <class R, class C, class... P>
struct ParametersOfCall<R (C::*)(P...) const noexcept> : ParametersOfCall<R (C::*)(P...)> {};
template <class R, class... P>
struct ParametersOf<R (*)(P...)> {
  using Type = Parameters<P...>;
};
template <class R, class... P>
struct ParametersOf<R (*)(P...) noexcept> : ParametersOf<R (*)(P...)> {};
// An accessor, called on the element.
template <class R, class C>
struct ParametersOf<R (C::*)() const> {
  using Type = Parameters<const C&>;
};
template <class R, class C>
struct ParametersOf<R (C::*)() const noexcept> : ParametersOf<R (C::*)() const> {};
template <class R, class C>
struct ParametersOf<R (C::*)()> {
  using Type = Parameters<C&>;
};
template <class R, class C>
struct ParametersOf<R (C::*)() noexcept> : ParametersOf<R (C::*)()> {};
template <class R, class C>
requires std::is_object_v<R>
struct ParametersOf<R C::*> {
  using Type = Parameters<const C&>;
};

template <class T>
inline constexpr bool isNullptr = std::is_null_pointer_v<std::remove_cvref_t<T>>;

/// A closure that may be absent at run time: an empty Block or std::function, a null pointer. A lambda or the address
/// of a member never is.
template <class F>
consteval bool canBeAbsent() {
  using Closure = std::decay_t<F>;
  if constexpr (std::is_null_pointer_v<Closure> || std::is_pointer_v<Closure>)
    return true;
  else if constexpr (std::is_member_pointer_v<Closure>)
    return false;
  else
    return requires(const Closure& closure) { closure == nullptr; }
  &&!requires(const Closure& closure) { +closure; };  // a lambda without captures compares as the pointer it becomes
}
template <class F>
[[nodiscard]] bool isAbsent(const F& closure) {
  if constexpr (isNullptr<F>)
    return true;
  else if constexpr (std::is_function_v<F> || !canBeAbsent<F>())
    return false;
  else
    return closure == nullptr;
}

/// Raises NSInvalidArgumentException: `operation` was given no closure and cannot do without.
[[noreturn]] NK_EXPORT void raiseNoClosure(const char* operation);

/// Raises NSInvalidArgumentException where a chain would begin with nothing.
NK_EXPORT void checkSource(const NSObject* source);

template <class F>
void checkClosure(const F& closure, const char* operation) {
  if (isAbsent(closure)) [[unlikely]]
    raiseNoClosure(operation);
}

/// A pointer to a member that is null raises NSInvalidArgumentException.
template <class F>
void checkAccessor([[maybe_unused]] const F& closure) {
  if constexpr (std::is_member_pointer_v<F>) {
    if (closure == nullptr) [[unlikely]]
      raiseNoClosure("a query");
  }
}

/// The element as a closure's parameter of type P: a reference where the element holds just that.
template <class P>
decltype(auto) argument(const Value& element) {
  using T = std::remove_cvref_t<P>;
  if constexpr (std::is_same_v<T, Value>) {
    return static_cast<const Value&>(element);
  } else if constexpr (std::is_base_of_v<NSObject, T>) {
    return elementAs<T>(element);
  } else if constexpr (std::is_same_v<T, Decimal>) {
    const Decimal* decimal = element.decimal();
    return decimal ? *decimal : element.as<Decimal>();
  } else if constexpr (std::is_same_v<T, NSString>) {
    const NSString* text = element.string();
    if (!text) [[unlikely]]
      raiseConversion(element, "a text");
    return static_cast<const NSString&>(*text);
  } else {
    return element.template as<T>();
  }
}

/// What a closure gave, as a value that owns itself; a reference to an object becomes a Ref.
template <class R>
auto owned(R&& result) {
  using T = std::remove_cvref_t<R>;
  if constexpr (std::is_base_of_v<NSObject, T>)
    return Ref<T>(const_cast<T*>(&result));
  else
    return T(std::forward<R>(result));
}

/// Calls the closure with elements that are Values, each as the parameter that it is for.
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

/// A closure's result as a Value, absent where it gave nullptr or nothing.
template <class R>
Value valueOf(R&& result) {
  using T = std::remove_cvref_t<R>;
  if constexpr (std::is_null_pointer_v<T>) {
    return {};
  } else if constexpr (std::is_constructible_v<Value, R>) {
    return Value(std::forward<R>(result));
  } else {
    constexpr bool becomesValue = ValueConvertible<T> && !isCharacter<T>;
    static_assert(becomesValue, "a query's closure gives what becomes a Value: an object does by its Ref");
    if constexpr (becomesValue) return ValueConversion<T>::toValue(result);
    __builtin_unreachable();
  }
}
template <class F, class... V>
Value valueFrom(F& closure, const V&... elements) {
  return valueOf(call(closure, elements...));
}

inline Value orNull(Value value) { return value.isAbsent() ? Value::null() : std::move(value); }

/// Values that need no Value around them: as one they are just that.
template <class E>
inline constexpr bool isPlain = (std::is_arithmetic_v<E> && !isCharacter<E> && std::is_constructible_v<Value, E>) ||
                                std::is_same_v<E, Decimal> || std::is_same_v<E, Date> || std::is_same_v<E, NSString>;

/// What a closure gives for an argument that lives on: a plain value that it refers to is not copied.
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

/// Asks the memory for the object of an element some places behind `at`, so that it is there when a query reaches it.
/// Two lines of the cache, since that is as much as most objects take. Always inline: a call of a function that only
/// prefetches has no effect for the compiler, which leaves it out.
[[gnu::always_inline]] inline void prefetchObject(std::span<const Value> elements, std::size_t at) noexcept {
  constexpr std::size_t ahead = 24, line = 64;
  if (at + ahead >= elements.size()) return;
  const auto* object = reinterpret_cast<const char*>(elements[at + ahead].object());
  if (!object) return;
  __builtin_prefetch(object);
  __builtin_prefetch(object + line);
}

/// For each element of a collection: ask(element), then use(element, answer) until that gives false. A collection that
/// was changed by `ask` raises NSGenericException before its elements are used again.
template <class Collection, class Ask, class Use>
void walk(const Collection& collection, Ask&& ask, Use&& use) {
  const Ref<const Collection> kept(&collection);
  [[maybe_unused]] std::size_t index = 0;
  for (auto at = collection.begin(), end = collection.end(); at != end;) {
    const auto& element = *at;
    if constexpr (std::is_base_of_v<NSArray, Collection>) prefetchObject(collection.elements(), index++);
    decltype(auto) answer = ask(element);
    ++at;
    if (!use(element, std::forward<decltype(answer)>(answer))) return;
  }
}

}  // namespace norvik::detail
