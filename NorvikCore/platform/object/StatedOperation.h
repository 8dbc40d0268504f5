// NorvikCore/platform/object/StatedOperation.h - how a declared operation is called with Values as arguments. The
// statement macros use it; users need not read it.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Statement.h"

#include <type_traits>
#include <utility>

namespace norvik::detail {

NK_EXPORT void checkArgumentCount(std::size_t wanted, std::size_t given);

template <class Signature>
struct Operation {
  static constexpr bool isOfObject = false, isOfClass = false;
};

template <class R, class C, class... A>
struct OperationOf {
  static constexpr bool isOfObject = !std::is_void_v<C>, isOfClass = std::is_void_v<C>;
  static constexpr std::size_t argumentCount = sizeof...(A);
  static constexpr bool isOfValues = (ValueConvertible<std::remove_cvref_t<A>> && ...) &&
                                     (std::is_void_v<R> || ValueConvertible<std::remove_cvref_t<R>>);

  template <class Call>
  static Value invoke(std::span<const Value> arguments, Call&& call) {
    checkArgumentCount(sizeof...(A), arguments.size());
    return [&]<std::size_t... i>(std::index_sequence<i...>) {
      if constexpr (std::is_void_v<R>) {
        call(ValueConversion<std::remove_cvref_t<A>>::fromValue(arguments[i])...);
        return Value();
      } else {
        return Value(ValueConversion<std::remove_cvref_t<R>>::toValue(
            call(ValueConversion<std::remove_cvref_t<A>>::fromValue(arguments[i])...)));
      }
    }
    (std::index_sequence_for<A...>());
  }
};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...)> : OperationOf<R, C, A...> {};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...) const> : OperationOf<R, C, A...> {};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...) noexcept> : OperationOf<R, C, A...> {};
template <class R, class C, class... A>
struct Operation<R (C::*)(A...) const noexcept> : OperationOf<R, C, A...> {};
template <class R, class... A>
struct Operation<R (*)(A...)> : OperationOf<R, void, A...> {};
template <class R, class... A>
struct Operation<R (*)(A...) noexcept> : OperationOf<R, void, A...> {};

template <class T, auto operation>
Value performMethod(NSObject* target, std::span<const Value> arguments) {
  return Operation<std::remove_const_t<decltype(operation)>>::invoke(arguments, [&](auto&&... a) -> decltype(auto) {
    return (static_cast<T&>(*target).*operation)(std::forward<decltype(a)>(a)...);
  });
}

template <class Find, class T>
Value performClassMethod(NSObject*, std::span<const Value> arguments) {
  constexpr auto operation = Find{}(std::type_identity<T>());
  return Operation<std::remove_const_t<decltype(operation)>>::invoke(
      arguments, [call = operation](auto&&... a) -> decltype(auto) { return call(std::forward<decltype(a)>(a)...); });
}

/// True if the operation's arguments and result convert to Values; rejects others with a one-sentence error.
template <class Operation>
constexpr bool isOfValues() {
  static_assert(Operation::isOfValues,
                "an operation that a class declares takes or returns a type without ValueConversion");
  return Operation::isOfValues;
}

/// An operation of the object; `find` returns its address in T. The selector text is `selector`; if that is null, it is
/// the name with one colon per argument.
template <class T, class Find>
constexpr Statement methodStatement(const char* name, const char* selector, Find) {
  Statement stated{.kind = StatementKind::Method, .name = name, .text = selector};
  if constexpr (findsMember<T, Find>()) {
    constexpr auto operation = Find{}(std::type_identity<T>());
    using Stated = Operation<std::remove_const_t<decltype(operation)>>;
    static_assert(Stated::isOfObject, "NK_METHOD names something that is not an operation of the object");
    if constexpr (Stated::isOfObject) {
      stated.argumentCount = Stated::argumentCount;
      if constexpr (isOfValues<Stated>()) stated.invoke = &performMethod<T, operation>;
    }
  }
  return stated;
}

/// The same for an operation of the class: a static member function.
template <class T, class Find>
constexpr Statement classMethodStatement(const char* name, const char* selector, Find) {
  Statement stated{.kind = StatementKind::ClassMethod, .name = name, .text = selector};
  if constexpr (findsMember<T, Find>()) {
    constexpr auto operation = Find{}(std::type_identity<T>());
    using Stated = Operation<std::remove_const_t<decltype(operation)>>;
    static_assert(Stated::isOfClass, "NK_CLASS_METHOD names something that is not a static member function");
    if constexpr (Stated::isOfClass) {
      stated.argumentCount = Stated::argumentCount;
      if constexpr (isOfValues<Stated>()) stated.invoke = &performClassMethod<Find, T>;
    }
  }
  return stated;
}

}  // namespace norvik::detail
