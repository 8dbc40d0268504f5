// NorvikCore/linq/ChainFilters.h - the steps of a chain that pass on some of the elements, each with its sink. Users
// need not read it.
#pragma once

#include "NorvikCore/linq/ChainElements.h"
#include "NorvikCore/linq/ChainSink.h"

#include <cstddef>
#include <vector>

namespace norvik::detail {

template <bool ofValues, class Predicate, class Next>
struct WhereSink {
  Predicate& predicate;
  Behind<Next> next;

  template <class E, class Guard>
  void put(const E& element, const Guard& guard) {
    if (passes(element)) {
      guard.check();
      next.put(element, guard);
    }
  }
  auto finish() { return next.finish(); }

 private:
  template <class E>
  bool passes(const E& element) {
    if constexpr (isNullptr<Predicate>)
      return true;
    else
      return isAbsent(predicate) || testWith<ofValues>(predicate, element);
  }
};

template <class Predicate>
struct WhereStep : PassingStep {
  Predicate predicate;
  static constexpr bool isLazy = !canBeAbsent<Predicate>();

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_where(collection, predicate);
  }
  template <bool ofValues, class Next>
  auto into(Next next) {
    return WhereSink<ofValues, Predicate, Next>{predicate, Behind<Next>(std::move(next))};
  }
  using Result = NSMutableArray;
};

template <class Next>
struct OfTypeSink {
  const Class* wanted;
  Behind<Next> next;

  [[nodiscard]] bool isOfType(const Value& element) const { return element.classObject().isSubclassOf(*wanted); }
  template <class E>
  [[nodiscard]] bool isOfType(const E& element) const {
    return isOfType(asElement(element));
  }

  template <class E, class Guard>
  bool put(const E& element, const Guard& guard) {
    if (isOfType(element)) next.put(element, guard);
    return next.wantsMore();
  }
  auto finish() { return next.finish(); }
};

struct OfTypeStep : PassingStep {
  const Class* wanted;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_ofType(collection, *wanted);
  }
  template <bool, class Next>
  auto into(Next next) {
    return OfTypeSink<Next>{wanted, Behind<Next>(std::move(next))};
  }
  using Result = NSArray;
};

template <class Next>
struct SkipSink {
  std::size_t left;
  Behind<Next> next;

  template <class E, class Guard>
  bool put(const E& element, const Guard& guard) {
    if (left > 0)
      --left;
    else
      next.put(element, guard);
    return next.wantsMore();
  }
  auto finish() { return next.finish(); }
};

struct SkipStep : PassingStep {
  std::size_t count;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_skip(collection, count);
  }
  template <bool, class Next>
  auto into(Next next) {
    return SkipSink<Next>{count, Behind<Next>(std::move(next))};
  }
  using Result = NSArray;
};

/// Stores the first `count` elements, and passes them on only if there is at least one more. linq_take returns nothing
/// otherwise.
template <class E, class Next>
struct TakeSink {
  std::size_t count;
  Behind<Next> next;
  std::vector<E> first{};
  bool isMore = false;

  template <class Guard>
  bool put(const E& element, const Guard&) {
    if (first.size() < count)
      first.push_back(element);
    else
      isMore = true;
    return !isMore;
  }
  auto finish() {
    if (isMore) {
      for (const E& each : first) next.put(each, NoGuard());
    }
    return next.finish();
  }
};

/// linq_take over an array, which needs the whole array.
struct TakeStep : AnyStepOfAChain {
  std::size_t count;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_take(collection, count);
  }
};
/// linq_take over another range.
template <class E>
struct TakePassingStep : PassingStep {
  std::size_t count;

  template <bool, class Next>
  auto into(Next next) {
    return TakeSink<E, Next>{count, Behind<Next>(std::move(next))};
  }
  using Result = NSArray;
};

/// linq_distinctWithBlock over elements that are not convertible to Values.
template <class Key, class Next>
struct DistinctSink {
  Key& key;
  Behind<Next> next;
  DistinctValues seen{};

  template <class E, class Guard>
  void put(const E& element, const Guard& guard) {
    const Value found = valueOf(callWith<false>(key, element));
    if (!found.isAbsent() && seen.add(found)) next.put(element, guard);
  }
  auto finish() { return next.finish(); }
};

template <class Key>
struct DistinctWithBlockStep : AnyStepOfAChain {
  Key key;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_distinctWithBlock(collection, key);
  }
};
template <class Key>
struct DistinctPassingStep : PassingStep {
  Key key;

  template <bool, class Next>
  auto into(Next next) {
    checkClosure(key, "linq_distinctWithBlock");
    return DistinctSink<Key, Next>{key, Behind<Next>(std::move(next))};
  }
  using Result = NSArray;
};

}  // namespace norvik::detail
