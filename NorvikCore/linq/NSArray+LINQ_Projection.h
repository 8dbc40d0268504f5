// NorvikCore/linq/NSArray+LINQ_Projection.h - the results of a closure for each element of an array.
//
//   linq_select(*payslips, &Payslip::netPay);
//   linq_selectMany(*payslips, [](const Payslip& p) { return p.lines(); });       // the lines of all payslips
//
// LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik {
namespace detail {

/// An empty array of the receiver's class.
[[nodiscard]] NK_EXPORT Ref<NSArray> emptyLike(const NSArray& receiver);
/// Appends the elements of an array. Appends nothing for an absent value or the null marker. Any other value raises
/// NSInvalidArgumentException.
NK_EXPORT void appendElements(std::vector<Value>& elements, const Value& array);

/// Appends the result of a closure: an array, nothing, or any range whose elements become Values.
template <class Many>
void appendMany(std::vector<Value>& elements, const Many& many) {
  if constexpr (isNullptr<Many> || std::is_constructible_v<Value, const Many&>) {
    appendElements(elements, valueOf(many));
  } else {
    for (const auto& each : many) elements.push_back(orNull(valueOf(each)));
  }
}

}  // namespace detail

/// The results of the selector for each element, in order; the null marker stands for a result of nothing. Without a
/// selector, an empty array of the receiver's class.
template <class Selector>
[[nodiscard]] Ref<NSArray> linq_select(const NSArray& receiver, Selector&& selector) {
  if (detail::isAbsent(selector)) return detail::emptyLike(receiver);
  std::vector<Value> results;
  if constexpr (!detail::isNullptr<Selector>) {
    results.reserve(receiver.count());
    detail::walk(
        receiver, [&](const Value& element) { return detail::orNull(detail::valueFrom(selector, element)); },
        [&](const Value&, Value&& result) {
          results.push_back(std::move(result));
          return true;
        });
  }
  return make<NSArray>(std::move(results));
}

/// The elements of all arrays that the selector returns, one after the other. The selector returns an array or another
/// range whose elements become Values. If it returns nothing or the null marker, it adds no elements. Any other value
/// raises NSInvalidArgumentException. Without a selector, an empty array of the receiver's class.
template <class Selector>
[[nodiscard]] Ref<NSArray> linq_selectMany(const NSArray& receiver, Selector&& selector) {
  if (detail::isAbsent(selector)) return detail::emptyLike(receiver);
  std::vector<Value> results;
  if constexpr (!detail::isNullptr<Selector>) {
    detail::walk(
        receiver, [&](const Value& element) { return detail::call(selector, element); },
        [&](const Value&, const auto& many) {
          detail::appendMany(results, many);
          return true;
        });
  }
  return make<NSArray>(std::move(results));
}

}  // namespace norvik
