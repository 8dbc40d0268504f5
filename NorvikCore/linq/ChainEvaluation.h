// NorvikCore/linq/ChainEvaluation.h - how a chain of queries is evaluated. Users need not read it.
#pragma once

#include "NorvikCore/linq/ChainFilters.h"
#include "NorvikCore/linq/ChainGroups.h"
#include "NorvikCore/linq/ChainLastSteps.h"
#include "NorvikCore/linq/ChainProjections.h"
#include "NorvikCore/linq/ChainSources.h"

#include <concepts>
#include <iterator>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik::detail {

template <class>
inline constexpr bool isNever = false;
template <class>
inline constexpr bool isDistinctWithBlock = false;
template <class Key>
inline constexpr bool isDistinctWithBlock<DistinctWithBlockStep<Key>> = true;
template <class>
inline constexpr bool isGroupBy = false;
template <class Key>
inline constexpr bool isGroupBy<GroupByStep<Key>> = true;

/// A property or a closure, and no collection.
template <class F>
concept ClosureOfAnElement = std::is_member_pointer_v<std::remove_cvref_t<F>> || requires {
  &std::remove_cvref_t<F>::operator();
} || std::is_invocable_v<F, const Value&>;

template <class Source, class... Steps>
class Chain {
 public:
  static constexpr bool isOfValues = Source::isOfValues;

  Chain(Source source, std::tuple<Steps...> steps) : source_(std::move(source)), steps_(std::move(steps)) {}
  Chain(const Chain&) = delete;
  Chain& operator=(const Chain&) = delete;

  /// The elements, as an array of the type that the last step's query returns.
  template <class Array>
  requires(std::is_base_of_v<Array, NSMutableArray>&& std::is_base_of_v<NSArray, Array>) operator Ref<Array>() && {
    return std::move(*this).array();
  }
  template <class Array>
  requires std::is_base_of_v<NSArray, Array>
  operator Ref<Array>() & {
    static_assert(isNever<Array>,
                  "a chain is evaluated in the statement in which it is written: keep its result, as a Ref");
  }
  /// The elements of a chain over another range than an array.
  template <class E>
  requires(!isOfValues) operator std::vector<E>() && { return std::move(*this).run(CollectSink<E>()); }

  template <class Access = void>
  NSArray* operator->() const {
    static_assert(isNever<Access>, "a chain is no array yet: keep its result, as a Ref<NSArray>, and use that");
    return nullptr;
  }
  template <class Loop = void>
  Value* begin() const {
    static_assert(isNever<Loop>, "a chain cannot be iterated over: keep its result, as a Ref, and iterate over that");
    return nullptr;
  }
  template <class Loop = void>
  Value* end() const {
    return nullptr;
  }

  template <class Step>
  auto then(Step step) && {
    static_assert(std::is_base_of_v<AnyStepOfAChain, Step>, "a step of a chain is a query without its receiver");
    using E = typename ElementsBehind<typename Source::Element, Steps...>::Type;
    if constexpr (std::is_same_v<Step, TakeStep> && !isOfValues) {
      return std::move(*this).with(TakePassingStep<E>{{}, step.count});
    } else if constexpr (!becomesValue<E>() && isDistinctWithBlock<Step>) {
      return std::move(*this).with(DistinctPassingStep<decltype(step.key)>{{}, std::move(step.key)});
    } else if constexpr (!becomesValue<E>() && isGroupBy<Step>) {
      return std::move(*this).run(step.template sink<E>());
    } else if constexpr (std::is_same_v<Step, ToArrayStep>) {
      return make<NSMutableArray>(std::move(*this).run(CollectValuesSink()));
    } else if constexpr (std::is_base_of_v<LastStep, Step>) {
      return std::move(*this).run(step.template end<isOfValues, E>());
    } else if constexpr (isPassing<Step>()) {
      return std::move(*this).with(std::move(step));
    } else {
      constexpr bool areValues = becomesValue<E>();
      static_assert(areValues, "this query needs elements that convert to Value: convert them by linq_select first");
      if constexpr (areValues) {
        const auto array = std::move(*this).array();
        return step.apply(*array);
      }
    }
  }

 private:
  template <class E, class... S>
  struct ElementsBehind {
    using Type = E;
  };
  template <class E, class First, class... Others>
  struct ElementsBehind<E, First, Others...> : ElementsBehind<typename First::template Out<isOfValues, E>, Others...> {
  };

  template <class Step>
  static consteval bool isPassing() {
    if constexpr (std::is_base_of_v<PassingStep, Step>)
      return Step::isLazy || !isOfValues;
    else
      return false;
  }

  template <class Step>
  auto with(Step step) && {
    return Chain<Source, Steps..., Step>(std::move(source_),
                                         std::tuple_cat(std::move(steps_), std::tuple<Step>(std::move(step))));
  }
  auto array() && {
    using Array = typename ResultOf<Steps...>::Type;
    return make<Array>(std::move(*this).run(CollectValuesSink()));
  }
  template <class... S>
  struct ResultOf {
    using Type = NSArray;
  };
  template <class Last>
  struct ResultOf<Last> {
    using Type = typename Last::Result;
  };
  template <class First, class Second, class... Others>
  struct ResultOf<First, Second, Others...> : ResultOf<Second, Others...> {};

  template <class Sink>
  auto run(Sink sink) && {
    auto first = assemble<sizeof...(Steps)>(std::move(sink));
    source_.feed(first);
    return first.finish();
  }
  template <std::size_t count, class Sink>
  auto assemble(Sink sink) {
    if constexpr (count == 0)
      return sink;
    else
      return assemble<count - 1>(std::get<count - 1>(steps_).template into<isOfValues>(std::move(sink)));
  }

  Source source_;
  std::tuple<Steps...> steps_;
};

template <class Step>
concept StepOfAChain = std::is_base_of_v<AnyStepOfAChain, Step>;
template <class R>
concept UsersRange = requires(R& range) {
  std::begin(range);
  std::end(range);
}
&&!std::is_base_of_v<NSArray, std::remove_cvref_t<R>> && !std::is_base_of_v<NSDictionary, std::remove_cvref_t<R>>;

/// A chain that begins with an array.
template <StepOfAChain Step>
auto operator|(const NSArray& array, Step step) {
  if constexpr (std::is_base_of_v<PassingStep, Step>) {
    if constexpr (Step::isLazy)
      return Chain<ArraySource, Step>(ArraySource{Ref<const NSArray>(&array)}, std::tuple<Step>(std::move(step)));
    else
      return step.apply(array);
  } else {
    const Ref<const NSArray> kept(&array);
    return step.apply(array);
  }
}
template <StepOfAChain Step>
auto operator|(const NSDictionary& dictionary, Step step) {
  const Ref<const NSDictionary> kept(&dictionary);
  return step.apply(dictionary);
}
/// An empty Ref raises NSInvalidArgumentException.
template <class T, StepOfAChain Step>
auto operator|(const Ref<T>& collection, Step step) {
  checkSource(collection.get());
  return *collection | std::move(step);
}
/// A chain that begins with the array that a Value holds, such as a group of linq_groupBy.
template <std::same_as<Value> V, StepOfAChain Step>
auto operator|(const V& array, Step step) {
  return elementAs<NSArray>(array) | std::move(step);
}
template <UsersRange R, StepOfAChain Step>
auto operator|(R&& range, Step step) {
  return Chain<RangeSource<R>>(RangeSource<R>{std::forward<R>(range)}, {}).then(std::move(step));
}
template <class Source, class... Steps, StepOfAChain Step>
auto operator|(Chain<Source, Steps...>&& chain, Step step) {
  return std::move(chain).then(std::move(step));
}
template <class Source, class... Steps, StepOfAChain Step>
void operator|(Chain<Source, Steps...>&, const Step&) {
  static_assert(isNever<Step>,
                "a chain is evaluated in the statement in which it is written: keep its result, as a Ref");
}

}  // namespace norvik::detail
