// NorvikCore/Categories/TransformClosure.h - the closure argument of a binding: an NKTransformBlock, nullptr, or a
// closure that takes the value as its own type.
//
//   [](const Decimal& pennies) { return pennies / 100; }
//   [](const std::optional<Decimal>& pay) { return pay ? nk_currencyStyleString(*pay) : "none"_ns; }
//   &Employee::name
//
// The closure takes one value, as any type that a Value becomes (ValueConversion.h) or as a reference to an object, and
// returns anything that becomes a Value. A value of another kind raises NSInvalidArgumentException. So does an absent
// value, unless the closure takes it as a std::optional, a Ref or a Value.
#pragma once

#include "NorvikCore/platform/keyvalue/KeyPathValue.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/ClosureParameters.h"

#include <type_traits>
#include <utility>

namespace norvik {

/// Makes one value from another. An absent value is passed and returned as the absent Value.
using NKTransformBlock = Block<Value(const Value&)>;

namespace detail {

template <class All>
struct OnlyParameter {
  using Type = void;
};
template <class P>
struct OnlyParameter<Parameters<P>> {
  using Type = P;
};
/// The type of a closure's one parameter; void if it has several, or does not name its type.
template <class F>
using TransformParameter = typename OnlyParameter<typename ParametersOf<std::decay_t<F>>::Type>::Type;

template <class R>
inline constexpr bool isValueResult = std::is_constructible_v<Value, R> || ValueConvertible<std::remove_cvref_t<R>>;

/// A closure as the parameter of a function. Users pass the closure itself.
class TransformClosure {
 public:
  TransformClosure(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): the absent closure
  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, TransformClosure> && !std::is_null_pointer_v<std::remove_cvref_t<F>>)
      TransformClosure(F&& closure) {  // NOLINT(google-explicit-constructor): a closure is what a binding is given
    using P = TransformParameter<F>;
    if constexpr (std::is_constructible_v<NKTransformBlock, F>) {
      block_ = std::forward<F>(closure);
    } else if constexpr (std::is_void_v<P>) {
      static_assert(!std::is_void_v<P>, "the closure of a binding takes one value, of a type that it names");
    } else {
      using R = std::invoke_result_t<std::decay_t<F>&, P>;
      constexpr bool givesValue = isValueResult<R>;
      static_assert(givesValue, "the closure of a binding returns what becomes a Value: an object does by its Ref");
      if constexpr (givesValue) {
        if (!isNothing(closure)) {
          block_ = [closure = std::decay_t<F>(std::forward<F>(closure))](const Value& value) mutable -> Value {
            if constexpr (std::is_constructible_v<Value, R>)
              return Value(callClosure(closure, argumentFrom<P>(value)));
            else
              return ValueConversion<std::remove_cvref_t<R>>::toValue(callClosure(closure, argumentFrom<P>(value)));
          };
        }
      }
    }
  }

  [[nodiscard]] const NKTransformBlock& block() const noexcept { return block_; }

 private:
  NKTransformBlock block_;
};

/// Checks that a closure takes the value of a key path that leads to a T.
template <class F, class T>
consteval bool transformsTo() {
  using P = TransformParameter<F>;
  if constexpr (std::is_void_v<P> || std::is_base_of_v<NSObject, std::remove_cvref_t<P>>)
    return true;
  else
    return isValueParameter<P, T>();
}
/// Checks that the result of a closure, in the reverse direction, can be written to that key path.
template <class F, class T>
consteval bool transformsFrom() {
  using P = TransformParameter<F>;
  if constexpr (std::is_void_v<P>) {
    return true;
  } else {
    using R = std::remove_cvref_t<std::invoke_result_t<std::decay_t<F>&, P>>;
    constexpr bool isWritable = takes<T, R>();
    static_assert(isWritable, "the closure of the reverse direction returns another type than the key path leads to");
    return isWritable;
  }
}

}  // namespace detail
}  // namespace norvik
