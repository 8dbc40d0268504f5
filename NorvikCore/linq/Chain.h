// NorvikCore/linq/Chain.h - queries applied one after the other, read from left to right.
//
//   Value net = payslips | linq_where([](const Payslip& p) { return p.isPaid(); })
//                        | linq_select(&Payslip::netPay)
//                        | linq_sum();
//   Ref<NSMutableDictionary> groups = payslips | linq_where(isPaid) | linq_groupBy(&Payslip::department);
//
// A chain begins with an array, a dictionary or a Ref to one, with a Value that holds an array, or with any other
// range, such as a std::vector<Line>. Each step is the query of that name without its receiver, and has the same result
// as the query.
//
// linq_where, linq_select, linq_selectMany, linq_ofType and linq_skip create no intermediate arrays: each element
// passes through all of them, up to the next query that needs all elements. The results are the same as with separate
// queries, and so are the elements with which each closure is called, the number of calls, and the exception that
// leaves the chain. There are two differences. The calls of different closures alternate. If a closure of any such step
// changes the array at the start of the chain, NSGenericException is raised. The loop ends early only if no closure of
// an earlier step would have been called again.
//
// Each step over a dictionary is the query itself.
//
// A chain is evaluated in the statement in which it is written, so a chain itself cannot be stored. Store its result,
// as a Ref or by linq_toArray(). A chain retains an array at its start. It refers to any other range that is a
// variable, and owns one that is a temporary.
//
// A chain over any other range passes the range's own elements to closures. These elements need not be convertible to
// Values in linq_where, linq_select, linq_selectMany, linq_skip, linq_take, linq_distinctWithBlock, linq_all, linq_any,
// linq_count, linq_firstOrNil and linq_groupBy. Then linq_firstOrNil returns a std::optional of an element, and
// linq_groupBy a std::vector of groups, each with its `key` and its `elements`. A chain of such elements converts to a
// std::vector. Before every other query, linq_select something that is convertible to a Value. All other rules are the
// same as over arrays.
#pragma once

#include "NorvikCore/linq/ChainEvaluation.h"

namespace norvik {

// The elements of a chain over Values, as a new mutable array. Over a dictionary, its values.
[[nodiscard]] inline auto linq_toArray() { return detail::ToArrayStep(); }

template <class Predicate>
[[nodiscard]] auto linq_where(Predicate&& predicate) {
  return detail::WhereStep<std::decay_t<Predicate>>{{}, std::forward<Predicate>(predicate)};
}
template <class Predicate>
[[nodiscard]] auto linq_whereKey(Predicate&& predicate) {
  return detail::wholeStep([predicate = std::forward<Predicate>(predicate)](const auto& it) mutable {
    return linq_whereKey(it, predicate);
  });
}
template <class Predicate>
[[nodiscard]] auto linq_whereValue(Predicate&& predicate) {
  return detail::wholeStep([predicate = std::forward<Predicate>(predicate)](const auto& it) mutable {
    return linq_whereValue(it, predicate);
  });
}
[[nodiscard]] inline auto linq_ofType(const Class& wanted) { return detail::OfTypeStep{{}, &wanted}; }
template <class T>
[[nodiscard]] auto linq_ofType() {
  return linq_ofType(detail::classOf<T>());
}
[[nodiscard]] inline auto linq_ofTypeKey(const Class& wanted) {
  return detail::wholeStep([&wanted](const auto& it) mutable { return linq_ofTypeKey(it, wanted); });
}
template <class T>
[[nodiscard]] auto linq_ofTypeKey() {
  return linq_ofTypeKey(detail::classOf<T>());
}
[[nodiscard]] inline auto linq_ofTypeValue(const Class& wanted) {
  return detail::wholeStep([&wanted](const auto& it) mutable { return linq_ofTypeValue(it, wanted); });
}
template <class T>
[[nodiscard]] auto linq_ofTypeValue() {
  return linq_ofTypeValue(detail::classOf<T>());
}
template <class Predicate>
[[nodiscard]] auto linq_firstOrNil(Predicate&& predicate) {
  return detail::FirstStep<std::decay_t<Predicate>>{{}, std::forward<Predicate>(predicate)};
}

template <class Selector>
[[nodiscard]] auto linq_select(Selector&& selector) {
  return detail::SelectStep<std::decay_t<Selector>>{{}, std::forward<Selector>(selector)};
}
template <class Selector>
[[nodiscard]] auto linq_selectMany(Selector&& selector) {
  return detail::SelectManyStep<std::decay_t<Selector>>{{}, std::forward<Selector>(selector)};
}

[[nodiscard]] inline auto linq_skip(std::size_t count) { return detail::SkipStep{{}, count}; }
[[nodiscard]] inline auto linq_take(std::size_t count) { return detail::TakeStep{{}, count}; }

template <class Predicate>
[[nodiscard]] auto linq_all(Predicate&& predicate) {
  return detail::AllStep<std::decay_t<Predicate>>{{}, std::forward<Predicate>(predicate)};
}
template <class Predicate>
[[nodiscard]] auto linq_any(Predicate&& predicate) {
  return detail::AnyStep<std::decay_t<Predicate>>{{}, std::forward<Predicate>(predicate)};
}

[[nodiscard]] inline auto linq_distinct() {
  return detail::wholeStep([](const auto& it) mutable { return linq_distinct(it); });
}
template <class KeySelector>
[[nodiscard]] auto linq_distinctWithBlock(KeySelector&& key) {
  return detail::DistinctWithBlockStep<std::decay_t<KeySelector>>{{}, std::forward<KeySelector>(key)};
}
// The other collection is a Ref or nullptr.
template <class Other>
[[nodiscard]] auto linq_except(Other other) {
  return detail::wholeStep([other = std::move(other)](const auto& it) mutable { return linq_except(it, other); });
}
template <class Other>
[[nodiscard]] auto linq_intersect(Other other) {
  return detail::wholeStep([other = std::move(other)](const auto& it) mutable { return linq_intersect(it, other); });
}
template <class Other>
[[nodiscard]] auto linq_union(Other other) {
  return detail::wholeStep([other = std::move(other)](const auto& it) mutable { return linq_union(it, other); });
}
template <class Other>
[[nodiscard]] auto linq_merge(Other other) {
  return detail::wholeStep([other = std::move(other)](const auto& it) mutable { return linq_merge(it, other); });
}

[[nodiscard]] inline auto linq_orderByAscending() {
  return detail::wholeStep([](const auto& it) mutable { return linq_orderByAscending(it); });
}
[[nodiscard]] inline auto linq_orderByDescending() {
  return detail::wholeStep([](const auto& it) mutable { return linq_orderByDescending(it); });
}
[[nodiscard]] inline auto linq_orderByKey(const NSString& keyPath, bool ascending) {
  return detail::wholeStep(
      [keyPath, ascending](const auto& it) mutable { return linq_orderByKey(it, keyPath, ascending); });
}
[[nodiscard]] inline auto linq_reverse() {
  return detail::wholeStep([](const auto& it) mutable { return linq_reverse(it); });
}

template <class KeySelector>
[[nodiscard]] auto linq_groupBy(KeySelector&& key) {
  return detail::GroupByStep<std::decay_t<KeySelector>>{{}, std::forward<KeySelector>(key)};
}
template <class KeySelector>
[[nodiscard]] auto linq_toLookup(KeySelector&& key) {
  return detail::wholeStep(
      [key = std::forward<KeySelector>(key)](const auto& it) mutable { return linq_toLookup(it, key); });
}
[[nodiscard]] inline auto linq_lookup(const Value& key) {
  return detail::wholeStep([key](const auto& it) mutable { return linq_lookup(it, key); });
}

[[nodiscard]] inline auto linq_toDictionary() {
  return detail::wholeStep([](const auto& it) mutable { return linq_toDictionary(it); });
}
template <class KeySelector>
[[nodiscard]] auto linq_toDictionaryWithKeyBlock(KeySelector&& key) {
  return detail::wholeStep([key = std::forward<KeySelector>(key)](const auto& it) mutable {
    return linq_toDictionaryWithKeyBlock(it, key);
  });
}
template <class KeySelector, class ValueSelector>
requires(!std::is_convertible_v<KeySelector, const NSArray&>)  // with an NSArray first, it is the query itself
    [[nodiscard]] auto linq_toDictionaryWithKeyBlock(KeySelector&& key, ValueSelector&& value) {
  return detail::wholeStep([key = std::forward<KeySelector>(key), value = std::forward<ValueSelector>(value)](
                               const auto& it) mutable { return linq_toDictionaryWithKeyBlock(it, key, value); });
}
template <class Predicate>
[[nodiscard]] auto linq_toArrayWhereKey(Predicate&& predicate) {
  return detail::wholeStep([predicate = std::forward<Predicate>(predicate)](const auto& it) mutable {
    return linq_toArrayWhereKey(it, predicate);
  });
}
template <class Predicate>
[[nodiscard]] auto linq_toArrayWhereValue(Predicate&& predicate) {
  return detail::wholeStep([predicate = std::forward<Predicate>(predicate)](const auto& it) mutable {
    return linq_toArrayWhereValue(it, predicate);
  });
}
template <class Predicate>
[[nodiscard]] auto linq_toArrayWhereKeyValue(Predicate&& predicate) {
  return detail::wholeStep([predicate = std::forward<Predicate>(predicate)](const auto& it) mutable {
    return linq_toArrayWhereKeyValue(it, predicate);
  });
}

template <class Accumulator>
[[nodiscard]] auto linq_aggregate(Accumulator&& accumulator) {
  return detail::wholeStep([accumulator = std::forward<Accumulator>(accumulator)](const auto& it) mutable {
    return linq_aggregate(it, accumulator);
  });
}
[[nodiscard]] inline auto linq_sum() { return detail::SumStep(); }
[[nodiscard]] inline auto linq_avg() { return detail::AverageStep(); }
[[nodiscard]] inline auto linq_max() { return detail::GreatestStep(); }
[[nodiscard]] inline auto linq_min() { return detail::LeastStep(); }
template <class Predicate>
[[nodiscard]] auto linq_count(Predicate&& predicate) {
  return detail::CountStep<std::decay_t<Predicate>>{{}, std::forward<Predicate>(predicate)};
}

// A property or a closure in one of these does not compile, with a sentence that says what to write.
template <detail::ClosureOfAnElement F>
auto linq_sum(F&&) {
  static_assert(detail::isNever<F>, "linq_sum adds the elements themselves: write linq_select(...) | linq_sum()");
  return linq_sum();
}
template <detail::ClosureOfAnElement F>
auto linq_avg(F&&) {
  static_assert(detail::isNever<F>, "linq_avg adds the elements themselves: write linq_select(...) | linq_avg()");
  return linq_avg();
}
template <detail::ClosureOfAnElement F>
auto linq_max(F&&) {
  static_assert(detail::isNever<F>, "linq_max compares the elements themselves: write linq_select(...) | linq_max()");
  return linq_max();
}
template <detail::ClosureOfAnElement F>
auto linq_min(F&&) {
  static_assert(detail::isNever<F>, "linq_min compares the elements themselves: write linq_select(...) | linq_min()");
  return linq_min();
}
template <detail::ClosureOfAnElement F>
auto linq_orderByAscending(F&&) {
  static_assert(detail::isNever<F>,
                "this compares the elements themselves: write linq_orderByKey(keyPath<&Payslip::netPay>(), true)");
  return linq_orderByAscending();
}
template <detail::ClosureOfAnElement F>
auto linq_orderByDescending(F&&) {
  static_assert(detail::isNever<F>,
                "this compares the elements themselves: write linq_orderByKey(keyPath<&Payslip::netPay>(), false)");
  return linq_orderByDescending();
}

/// The number of elements.
[[nodiscard]] inline auto linq_count() { return detail::CountStep<std::nullptr_t>{{}, nullptr}; }
[[nodiscard]] inline auto linq_sumForKey(const NSString& key) {
  return detail::wholeStep([key](const auto& it) mutable { return linq_sumForKey(it, key); });
}
[[nodiscard]] inline auto linq_avgForKey(const NSString& key) {
  return detail::wholeStep([key](const auto& it) mutable { return linq_avgForKey(it, key); });
}
[[nodiscard]] inline auto linq_maxForKey(const NSString& key) {
  return detail::wholeStep([key](const auto& it) mutable { return linq_maxForKey(it, key); });
}
[[nodiscard]] inline auto linq_minForKey(const NSString& key) {
  return detail::wholeStep([key](const auto& it) mutable { return linq_minForKey(it, key); });
}

}  // namespace norvik
