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

/// The result type of a filter with this predicate. If the predicate may be absent, the filter may return the receiver
/// itself, which may be immutable.
template <class Predicate, class Plain, class Mutable>
using Filtered = Ref<std::conditional_t<canBeAbsent<Predicate>(), Plain, Mutable>>;

/// The receiver itself, as a result.
template <class Collection>
[[nodiscard]] Ref<Collection> itself(const Collection& receiver) noexcept {
  return ref(const_cast<Collection&>(receiver));
}

/// The class of elements of type T: the class T itself for objects; NSNumber, NSDecimalNumber, NSDate or NSString for
/// values.
template <class T>
[[nodiscard]] const Class& classOf() {
  if constexpr (std::is_base_of_v<NSObject, T>)
    return T::staticClass();
  else
    return Value(T()).classObject();
}

}  // namespace detail

/// The elements for which the predicate is true, in order, as a new mutable array. Without a predicate, the receiver
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

/// The elements whose class is `wanted` or a subclass of it. A Decimal is of the classes NSDecimalNumber and NSNumber;
/// every other number and every boolean is of the class NSNumber.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_ofType(const NSArray& receiver, const Class& wanted);
/// T is a class of objects, or NSNumber, Decimal, Date or NSString.
template <class T>
[[nodiscard]] Ref<NSArray> linq_ofType(const NSArray& receiver) {
  return linq_ofType(receiver, detail::classOf<T>());
}

/// The first element for which the predicate is true; the predicate is not called for the elements after it. Absent if
/// there is no such element or no predicate.
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
