// NorvikCore/linq/ChainSteps.h - how a chain of queries is evaluated. Users need not read it.
//
// A step is either one that elements pass through, or the last one, or one for which the whole collection is needed.
// When a chain meets the second or third, its steps are put together to one loop: the source puts each element into the
// first step's sink, that one puts what it makes of it into the next one's, and finish() asks for the result. put()
// tells whether the sink wants more.
#pragma once

#include "NorvikCore/linq/LINQQueries.h"

#include <exception>
#include <iterator>
#include <optional>
#include <tuple>
#include <vector>

namespace norvik::detail {

// Elements

/// Values that need no Value around them: as one they are just that.
template <class E>
inline constexpr bool isPlain = (std::is_arithmetic_v<E> && !isCharacter<E> && std::is_constructible_v<Value, E>) ||
                                std::is_same_v<E, Decimal> || std::is_same_v<E, Date> || std::is_same_v<E, NSString>;

template <class E>
consteval bool becomesValue() {
  if constexpr (std::is_base_of_v<NSObject, E> || std::is_null_pointer_v<E> || std::is_constructible_v<Value, const E&>)
    return true;
  else
    return ValueConvertible<E> && !isCharacter<E>;
}

/// As an array holds it.
template <class E>
Value asElement(const E& element) {
  static_assert(becomesValue<E>(), "this query needs elements that become Values: linq_select what becomes one first");
  if constexpr (std::is_base_of_v<NSObject, E>)
    return ref(const_cast<E&>(element));
  else if constexpr (std::is_same_v<E, Value>)
    return orNull(element);
  else if constexpr (becomesValue<E>())
    return orNull(valueOf(element));
  __builtin_unreachable();
}

/// What a selector gave, as an element of a chain: a Value unless it is plain or, in a chain over a range of the
/// user's, something that is never absent.
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

template <class P>
struct FirstOf {
  using Type = void;
};
template <class First, class... Others>
struct FirstOf<Parameters<First, Others...>> {
  using Type = std::remove_cvref_t<First>;
};

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

/// Calls a closure with an element.
template <bool ofValues, class F, class E>
decltype(auto) callWith(F& closure, const E& element) {
  using P = typename ParametersOf<F>::Type;
  using Wanted = typename FirstOf<P>::Type;
  if constexpr (std::is_same_v<E, Value>) {
    if constexpr (std::is_base_of_v<NSObject, Wanted>)
      return resultOf(closure, elementAs<Wanted>(element));
    else
      return call(closure, element);
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

/// Asked before an element of the source is used that a closure was called with.
struct ArrayGuard {
  const NSArray::const_iterator& at;
  /// Raises NSGenericException where the array was changed.
  void check() const {
    auto next = at;
    ++next;
  }
};
struct NoGuard {
  void check() const noexcept {}
};

// Sinks

/// The next step's sink. What it throws waits until the steps before have had every element, as if each step made its
/// array before the next one began.
template <class Next>
class Behind {
 public:
  explicit Behind(Next next) : next_(std::move(next)) {}

  [[nodiscard]] bool wantsMore() const noexcept { return wantsMore_; }
  template <class E, class Guard>
  void put(const E& element, const Guard& guard) {
    if (!wantsMore_) [[unlikely]]
      return;
    try {
      if constexpr (std::is_void_v<decltype(next_.put(element, guard))>)
        next_.put(element, guard);
      else
        wantsMore_ = next_.put(element, guard);
    } catch (...) {
      wantsMore_ = false;
      failure_ = std::current_exception();
    }
  }
  auto finish() {
    if (failure_) std::rethrow_exception(failure_);
    return next_.finish();
  }

 private:
  Next next_;
  std::exception_ptr failure_;
  bool wantsMore_ = true;
};

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

/// Holds the first elements back until there is one more.
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

/// Over elements that are no Values.
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

/// The elements of a key, where they are no Values.
template <class E>
struct Group {
  Value key;
  std::vector<E> elements;
  friend const Value& keyOf(const Group& group) noexcept { return group.key; }
};
template <class E, class Key>
struct GroupSink {
  Key& key;
  OrderedTable<Group<E>> groups{};

  template <class Guard>
  void put(const E& element, const Guard&) {
    const Value found = valueOf(callWith<false>(key, element));
    checkPresent(found, "linq_groupBy:, key");
    Group<E>* group = groups.find(found);
    if (!group) group = groups.insert({found, {}}).first;
    group->elements.push_back(element);
  }
  auto finish() { return groups.takeAll(); }
};

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

/// Looks for the first element for which the predicate gives `wanted`.
template <bool ofValues, class E, bool wanted, class Predicate, class Finish>
struct SearchSink {
  Predicate& predicate;
  Finish found;  ///< makes the result of the optional element
  std::optional<E> first{};

  template <class Guard>
  bool put(const E& element, const Guard& guard) {
    if constexpr (isNullptr<Predicate>) {
      return false;
    } else {
      if (isAbsent(predicate)) return false;
      if (testWith<ofValues>(predicate, element) != wanted) return true;
      guard.check();
      first.emplace(element);
      return false;
    }
  }
  auto finish() { return found(std::move(first)); }
};

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

// Steps. `apply` is the query itself, for a collection that is there. `Out<ofValues, E>` is what the step makes of
// elements E, and `into` gives the step's sink before `next`. `end` gives the last sink of a chain of elements E.

struct AnyStepOfAChain {};
/// Elements pass through; `isLazy` where its closure cannot be absent.
struct PassingStep : AnyStepOfAChain {
  template <bool, class E>
  using Out = E;
  static constexpr bool isLazy = true;
};
struct LastStep : AnyStepOfAChain {};

template <class Apply>
struct WholeStep : AnyStepOfAChain {
  Apply query;
  explicit WholeStep(Apply itsQuery) : query(std::move(itsQuery)) {}
  template <class Collection>
  auto apply(const Collection& collection) {
    return query(collection);
  }
};
template <class Apply>
auto wholeStep(Apply query) {
  return WholeStep<Apply>(std::move(query));
}

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

/// Over an array it needs the whole of it.
struct TakeStep : AnyStepOfAChain {
  std::size_t count;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_take(collection, count);
  }
};
/// The same over a range of the user's.
template <class E>
struct TakePassingStep : PassingStep {
  std::size_t count;

  template <bool, class Next>
  auto into(Next next) {
    return TakeSink<E, Next>{count, Behind<Next>(std::move(next))};
  }
  using Result = NSArray;
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

template <class Key>
struct GroupByStep : AnyStepOfAChain {
  Key key;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_groupBy(collection, key);
  }
  template <class E>
  auto sink() {
    checkClosure(key, "linq_groupBy");
    return GroupSink<E, Key>{key};
  }
};

struct ToArrayStep : LastStep {
  auto apply(const NSArray& array) { return array.mutableCopy(); }
  auto apply(const NSDictionary& dictionary) { return linq_toArray(dictionary); }
};

template <class Aggregate, auto result>
struct AggregateStep : LastStep {
  template <bool, class E>
  auto end() {
    return AggregateSink<Aggregate, result>();
  }
};
struct SumStep : AggregateStep<Total, &Total::sum> {
  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_sum(collection);
  }
};
struct AverageStep : AggregateStep<Total, &Total::average> {
  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_avg(collection);
  }
};
struct GreatestStep : AggregateStep<Greatest, &Greatest::result> {
  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_max(collection);
  }
};
struct LeastStep : AggregateStep<Least, &Least::result> {
  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_min(collection);
  }
};

template <class Predicate>
struct FirstStep : LastStep {
  Predicate predicate;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_firstOrNil(collection, predicate);
  }
  template <bool ofValues, class E>
  auto end() {
    const auto found = [](std::optional<E>&& first) {
      if constexpr (ofValues || std::is_same_v<E, Value>)
        return first ? asElement(*first) : Value();
      else
        return std::move(first);
    };
    return SearchSink<ofValues, E, true, Predicate, decltype(found)>{predicate, found};
  }
};

template <class Predicate>
struct AllStep : LastStep {
  Predicate predicate;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_all(collection, predicate);
  }
  template <bool ofValues, class E>
  auto end() {
    const auto found = [](const std::optional<E>& first) { return !first; };
    return SearchSink<ofValues, E, false, Predicate, decltype(found)>{predicate, found};
  }
};

template <class Predicate>
struct AnyStep : LastStep {
  Predicate predicate;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_any(collection, predicate);
  }
  template <bool ofValues, class E>
  auto end() {
    const auto found = [](const std::optional<E>& first) { return first.has_value(); };
    return SearchSink<ofValues, E, true, Predicate, decltype(found)>{predicate, found};
  }
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

// Sources

/// The sink never wants to stop: its put() gives nothing.
template <class Sink, class E, class Guard>
inline constexpr bool wantsAll =
    std::is_void_v<decltype(std::declval<Sink&>().put(std::declval<const E&>(), std::declval<const Guard&>()))>;

struct ArraySource {
  static constexpr bool isOfValues = true;
  using Element = Value;
  Ref<const NSArray> array;

  template <class Sink>
  void feed(Sink& sink) {
    for (auto at = array->begin(), end = array->end(); at != end;) {
      if constexpr (wantsAll<Sink, Value, ArrayGuard>) {
        sink.put(*at, ArrayGuard{at});
        ++at;
      } else {
        const bool wantsMore = sink.put(*at, ArrayGuard{at});
        ++at;
        if (!wantsMore) return;
      }
    }
  }
};

/// R is a reference where the range is the user's variable.
template <class R>
struct RangeSource {
  static constexpr bool isOfValues = false;
  R range;
  using Element = std::remove_cvref_t<decltype(*std::begin(std::declval<R&>()))>;

  template <class Sink>
  void feed(Sink& sink) {
    for (auto&& each : range) {
      const Element& element = each;
      if constexpr (wantsAll<Sink, Element, NoGuard>)
        sink.put(element, NoGuard());
      else if (!sink.put(element, NoGuard()))
        return;
    }
  }
};

// The chain

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

template <class Source, class... Steps>
class Chain {
 public:
  static constexpr bool isOfValues = Source::isOfValues;

  Chain(Source source, std::tuple<Steps...> steps) : source_(std::move(source)), steps_(std::move(steps)) {}
  Chain(const Chain&) = delete;
  Chain& operator=(const Chain&) = delete;

  /// The elements as the array that the last step's query gives.
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
  /// Of a range of the user's.
  template <class E>
  requires(!isOfValues) operator std::vector<E>() && { return std::move(*this).run(CollectSink<E>()); }

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
      static_assert(areValues, "this query needs elements that become Values: linq_select what becomes one first");
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

/// Over an array that is there.
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
/// Over the array that a Value holds, such as a group of linq_groupBy.
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
