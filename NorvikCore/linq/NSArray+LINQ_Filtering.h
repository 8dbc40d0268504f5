// NorvikCore/linq/NSArray+LINQ_Filtering.h - the elements of an array that pass a test.
//
//   linq_where(*payslips, [](const Payslip& p) { return p.netPay() < 0; });
//   linq_firstOrNil(*payslips, [](const Payslip& p) { return p.name() == "Ann"; });
//   linq_ofType<Decimal>(*fields);
//
// LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {
namespace detail {

/// What a filter with this predicate gives: where the predicate may be absent, the receiver itself, which may be
/// one that does not change.
template <class Predicate, class Plain, class Mutable>
using Filtered = Ref<std::conditional_t<canBeAbsent<Predicate>(), Plain, Mutable>>;

/// The receiver itself, as a result.
template <class Collection>
[[nodiscard]] Ref<Collection> itself(const Collection& receiver) noexcept {
  return ref(const_cast<Collection&>(receiver));
}

/// The class of elements of this type: of objects their own, of values NSNumber, NSDecimalNumber, NSDate or NSString.
template <class T>
[[nodiscard]] const Class& classOf() {
  if constexpr (std::is_base_of_v<NSObject, T>)
    return T::staticClass();
  else
    return Value(T()).classObject();
}

}  // namespace detail

/// The elements for which the predicate is true, in order, as a new mutable array. With no predicate, the receiver
/// itself.
template <class Predicate>
[[nodiscard]] detail::Filtered<Predicate, NSArray, NSMutableArray> linq_where(const NSArray& receiver,
                                                                              Predicate&& predicate) {
  if constexpr (detail::canBeAbsent<Predicate>()) {
    if (detail::isAbsent(predicate)) return detail::itself(receiver);
  }
  std::vector<Value> passed;
  if constexpr (!detail::isNullptr<Predicate>) {
    detail::walk(
        receiver, [&](const Value& element) { return detail::test(predicate, element); },
        [&](const Value& element, bool passes) {
          if (passes) passed.push_back(element);
          return true;
        });
  }
  return make<NSMutableArray>(std::move(passed));
}

/// The elements whose class is that one or below it. A Decimal is of the classes NSDecimalNumber and NSNumber, every
/// other number and boolean of NSNumber.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_ofType(const NSArray& receiver, const Class& wanted);
/// By a class of objects, or by NSNumber, Decimal, Date or NSString.
template <class T>
[[nodiscard]] Ref<NSArray> linq_ofType(const NSArray& receiver) {
  return linq_ofType(receiver, detail::classOf<T>());
}

/// The first element for which the predicate is true; it is not called for those behind. Absent where there is none,
/// and with no predicate.
template <class Predicate>
[[nodiscard]] Value linq_firstOrNil(const NSArray& receiver, Predicate&& predicate) {
  Value found;
  if (detail::isAbsent(predicate)) return found;
  if constexpr (!detail::isNullptr<Predicate>) {
    detail::walk(
        receiver, [&](const Value& element) { return detail::test(predicate, element); },
        [&](const Value& element, bool passes) {
          if (passes) found = element;
          return !passes;
        });
  }
  return found;
}

}  // namespace norvik
