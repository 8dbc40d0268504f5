// NorvikCore/platform/object/ClosureParameters.h - which types a closure takes, and a Value as one of them. Users need
// not read it.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace norvik::detail {

template <class... P>
struct Parameters {
  static constexpr std::size_t count = sizeof...(P);
};

/// The parameters of a closure; void if it has several call operators or a template of one.
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
// A member function takes its object first.
template <class R, class C, class... P>
struct ParametersOf<R (C::*)(P...) const> {
  using Type = Parameters<const C&, P...>;
};
template <class R, class C, class... P>
struct ParametersOf<R (C::*)(P...) const noexcept> : ParametersOf<R (C::*)(P...) const> {};
template <class R, class C, class... P>
struct ParametersOf<R (C::*)(P...)> {
  using Type = Parameters<C&, P...>;
};
template <class R, class C, class... P>
struct ParametersOf<R (C::*)(P...) noexcept> : ParametersOf<R (C::*)(P...)> {};
template <class R, class C>
requires std::is_object_v<R>
struct ParametersOf<R C::*> {
  using Type = Parameters<const C&>;
};

template <class T>
inline constexpr bool isNullptr = std::is_null_pointer_v<std::remove_cvref_t<T>>;

/// True if a closure of this type may be absent at run time: an empty Block or std::function, a null pointer to a
/// function. A lambda and the address of a member are never absent.
template <class F>
consteval bool canBeAbsent() {
  using Closure = std::decay_t<F>;
  if constexpr (std::is_null_pointer_v<Closure> || std::is_pointer_v<Closure>)
    return true;
  else if constexpr (std::is_member_pointer_v<Closure>)
    return false;
  else
    return requires(const Closure& closure) { closure == nullptr; }
  &&!requires(const Closure& closure) { +closure; };  // a lambda without captures compares as a pointer to a function
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

/// isAbsent(), also for a null pointer to a member.
template <class F>
[[nodiscard]] bool isNothing(const F& closure) {
  if constexpr (std::is_member_pointer_v<F>)
    return closure == nullptr;
  else
    return isAbsent(closure);
}

/// Calls a closure, or a member of the first argument: std::invoke without <functional>.
template <class F, class... A>
decltype(auto) callClosure(F& closure, A&&... arguments) {
  if constexpr (std::is_member_pointer_v<F>) {
    return [&](auto& object, auto&&... rest) -> decltype(auto) {
      if constexpr (std::is_member_function_pointer_v<F>)
        return (object.*closure)(std::forward<decltype(rest)>(rest)...);
      else
        return (object.*closure);
    }(arguments...);
  } else {
    return closure(std::forward<A>(arguments)...);
  }
}

/// The value as the type of a closure's parameter P. Returns a reference if the value holds exactly that type. Any
/// other value is converted as by Value::as(); one that does not convert raises NSInvalidArgumentException.
template <class P>
decltype(auto) argumentFrom(const Value& value) {
  using T = std::remove_cvref_t<P>;
  if constexpr (std::is_same_v<T, Value>) {
    return static_cast<const Value&>(value);
  } else if constexpr (std::is_base_of_v<NSObject, T>) {
    T* object = value.object<T>();
    if (!object) [[unlikely]]
      raiseConversion(value, "an object of the class that the closure takes");
    return static_cast<T&>(*object);
  } else if constexpr (std::is_same_v<T, Decimal>) {
    const Decimal* decimal = value.decimal();
    return decimal ? *decimal : value.as<Decimal>();
  } else if constexpr (std::is_same_v<T, NSString>) {
    const NSString* text = value.string();
    if (!text) [[unlikely]]
      raiseConversion(value, "a text");
    return static_cast<const NSString&>(*text);
  } else {
    return value.template as<T>();
  }
}

}  // namespace norvik::detail
