// NorvikCore/linq/ChainProjections.h - the steps of a chain that replace each element by others, with their sinks.
// Users need not read it.
#pragma once

#include "NorvikCore/linq/ChainElements.h"
#include "NorvikCore/linq/ChainSink.h"

#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik::detail {

template <bool ofValues, class Selector, class Next>
struct SelectSink {
  Selector& selector;
  Behind<Next> next;

  template <class E, class Guard>
  void put(const E& given, const Guard&) {
    if (isAbsent(selector)) return;
    decltype(auto) result = callWith<ofValues>(selector, given);
    using R = std::remove_cvref_t<decltype(result)>;
    if constexpr (isPlain<R>)
      next.put(result, NoGuard());
    else
      next.put(element<ofValues, R>(std::move(result)), NoGuard());
  }
  auto finish() { return next.finish(); }
};

template <class Selector>
struct SelectStep : PassingStep {
  Selector selector;
  static constexpr bool isLazy = !canBeAbsent<Selector>();
  template <bool ofValues, class E>
  using Out = decltype(element<ofValues>(callWith<ofValues>(std::declval<Selector&>(), std::declval<const E&>())));

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_select(collection, selector);
  }
  template <bool ofValues, class Next>
  auto into(Next next) {
    return SelectSink<ofValues, Selector, Next>{selector, Behind<Next>(std::move(next))};
  }
  using Result = NSArray;
};

template <bool ofValues, class Selector, class Next>
struct SelectManySink {
  Selector& selector;
  Behind<Next> next;

  template <class E, class Guard>
  void put(const E& given, const Guard&) {
    if (isAbsent(selector)) return;
    const auto many = callWith<ofValues>(selector, given);
    using Many = std::remove_cvref_t<decltype(many)>;
    if constexpr (isNullptr<Many> || std::is_constructible_v<Value, const Many&>) {
      std::vector<Value> elements;
      appendElements(elements, valueOf(many));
      for (const Value& each : elements) next.put(each, NoGuard());
    } else {
      for (const auto& each : many) next.put(element<ofValues, std::remove_cvref_t<decltype(each)>>(each), NoGuard());
    }
  }
  auto finish() { return next.finish(); }
};

template <bool ofValues, class Many>
struct ElementOf {
  using Type = Value;
};
template <bool ofValues, class Many>
requires(!isNullptr<Many> && !std::is_constructible_v<Value, const Many&>) struct ElementOf<ofValues, Many> {
  using Each = std::remove_cvref_t<decltype(*std::begin(std::declval<const Many&>()))>;
  using Type = decltype(element<ofValues, Each>(std::declval<Each>()));
};

template <class Selector>
struct SelectManyStep : PassingStep {
  Selector selector;
  static constexpr bool isLazy = !canBeAbsent<Selector>();
  template <bool ofValues, class E>
  using Out =
      typename ElementOf<ofValues,
                         decltype(callWith<ofValues>(std::declval<Selector&>(), std::declval<const E&>()))>::Type;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_selectMany(collection, selector);
  }
  template <bool ofValues, class Next>
  auto into(Next next) {
    return SelectManySink<ofValues, Selector, Next>{selector, Behind<Next>(std::move(next))};
  }
  using Result = NSArray;
};

}  // namespace norvik::detail
