// NorvikCore/linq/ChainLastSteps.h - the steps that end a chain with a result computed from its elements, each with its
// sink. Users need not read it.
#pragma once

#include "NorvikCore/linq/ChainElements.h"
#include "NorvikCore/linq/ChainSink.h"

#include <cstddef>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik::detail {

template <class E>
struct CollectSink {
  std::vector<E> elements{};

  template <class Guard>
  void put(const E& element, const Guard&) {
    elements.push_back(element);
  }
  auto finish() { return std::move(elements); }
};
struct CollectValuesSink {
  std::vector<Value> elements{};

  template <class E, class Guard>
  void put(const E& element, const Guard&) {
    elements.push_back(asElement(element));
  }
  auto finish() { return std::move(elements); }
};

struct ToArrayStep : LastStep {
  auto apply(const NSArray& array) { return array.mutableCopy(); }
  auto apply(const NSDictionary& dictionary) { return linq_toArray(dictionary); }
};

template <class Aggregate, auto result>
struct AggregateSink {
  Aggregate aggregate{};

  template <class E, class Guard>
  void put(const E& element, const Guard&) {
    if constexpr (std::is_same_v<E, Decimal> || std::is_same_v<E, Value>)
      aggregate.add(element);
    else
      aggregate.add(asElement(element));
  }
  auto finish() { return (aggregate.*result)(); }
};

template <class Aggregate, auto result>
struct AggregateStep : LastStep {
  template <class Collection>
  auto apply(const Collection& collection) {
    return (aggregated(collection, Aggregate()).*result)();
  }
  template <bool, class E>
  auto end() {
    return AggregateSink<Aggregate, result>();
  }
};
using SumStep = AggregateStep<Total, &Total::sum>;
using AverageStep = AggregateStep<Total, &Total::average>;
using GreatestStep = AggregateStep<Greatest, &Greatest::result>;
using LeastStep = AggregateStep<Least, &Least::result>;

// A search looks for the first element for which the predicate returns `wanted`. `result` makes the search's answer of
// it, and `of` is the query itself.

struct FirstMatch {
  static constexpr bool wanted = true;
  template <class Collection, class Predicate>
  static auto of(const Collection& collection, Predicate& predicate) {
    return linq_firstOrNil(collection, predicate);
  }
  template <bool ofValues, class E>
  static auto result(std::optional<E>&& found) {
    if constexpr (ofValues || std::is_same_v<E, Value>)
      return found ? asElement(*found) : Value();
    else
      return std::move(found);
  }
};
struct AllMatch {
  static constexpr bool wanted = false;
  template <class Collection, class Predicate>
  static auto of(const Collection& collection, Predicate& predicate) {
    return linq_all(collection, predicate);
  }
  template <bool, class E>
  static bool result(std::optional<E>&& found) {
    return !found;
  }
};
struct AnyMatch {
  static constexpr bool wanted = true;
  template <class Collection, class Predicate>
  static auto of(const Collection& collection, Predicate& predicate) {
    return linq_any(collection, predicate);
  }
  template <bool, class E>
  static bool result(std::optional<E>&& found) {
    return found.has_value();
  }
};

template <class Search, bool ofValues, class E, class Predicate>
struct SearchSink {
  Predicate& predicate;
  std::optional<E> found{};

  template <class Guard>
  bool put(const E& element, const Guard& guard) {
    if constexpr (isNullptr<Predicate>) {
      return false;
    } else {
      if (isAbsent(predicate)) return false;
      if (testWith<ofValues>(predicate, element) != Search::wanted) return true;
      guard.check();
      found.emplace(element);
      return false;
    }
  }
  auto finish() { return Search::template result<ofValues>(std::move(found)); }
};
template <class Search, class Predicate>
struct SearchStep : LastStep {
  Predicate predicate;

  template <class Collection>
  auto apply(const Collection& collection) {
    return Search::of(collection, predicate);
  }
  template <bool ofValues, class E>
  auto end() {
    return SearchSink<Search, ofValues, E, Predicate>{predicate};
  }
};
template <class Predicate>
using FirstStep = SearchStep<FirstMatch, Predicate>;
template <class Predicate>
using AllStep = SearchStep<AllMatch, Predicate>;
template <class Predicate>
using AnyStep = SearchStep<AnyMatch, Predicate>;

template <bool ofValues, class Predicate>
struct CountSink {
  Predicate& predicate;
  std::size_t count = 0;

  template <class E, class Guard>
  void put(const E& element, const Guard&) {
    if constexpr (isNullptr<Predicate>)
      ++count;
    else
      count += isAbsent(predicate) || testWith<ofValues>(predicate, element);
  }
  auto finish() { return count; }
};

template <class Predicate>
struct CountStep : LastStep {
  Predicate predicate;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_count(collection, predicate);
  }
  template <bool ofValues, class E>
  auto end() {
    return CountSink<ofValues, Predicate>{predicate};
  }
};

}  // namespace norvik::detail
