// NorvikCore/linq/NSArray+LINQ_Sets.h - arrays as sets: distinct elements, and differences, intersections and unions.
//
//   linq_distinct(*departments);
//   linq_distinctWithBlock(*payslips, &Payslip::department);      // the first payslip of each department
//   linq_except(*invited, paid);
//
// Elements are equal as Values are: 5 and 5.00 are one element, and the first is kept. The isEqual and hash of elements
// must not change an array. An absent other array is an empty Ref. If two rules of a function apply, the one that is
// stated first decides. The cost is that of hashing the elements, and constant time for each. LINQ.h tells what all
// queries have in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"
#include "NorvikCore/platform/collections/OrderedTable.h"

namespace norvik {
namespace detail {

[[nodiscard]] inline bool _isEmpty(const NSArray& array) noexcept { return array.count() == 0; }

/// Values in the order in which they were added, each once.
class DistinctValues {
 public:
  /// Returns true if the value was not there before.
  bool add(const Value& value) {
    const std::uint32_t hash = PositionIndex::spread(value.hash());
    if (index_.find(hash, [&](std::size_t at) { return values_[at] == value; }) != PositionIndex::notFound)
      return false;
    values_.push_back(value);
    index_.append(hash);
    return true;
  }
  [[nodiscard]] bool contains(const Value& value) const {
    const std::uint32_t hash = PositionIndex::spread(value.hash());
    return index_.find(hash, [&](std::size_t at) { return values_[at] == value; }) != PositionIndex::notFound;
  }
  [[nodiscard]] std::vector<Value> take() && { return std::move(values_); }

 private:
  std::vector<Value> values_;
  PositionIndex index_;
};

}  // namespace detail

/// Each element once, at its first position, as a mutable array. An empty receiver is itself returned.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_distinct(const NSArray& receiver);

/// The first element of each key, as a mutable array. Elements for which the selector returns nothing are left out; the
/// null marker is a key. An empty receiver is itself returned. If the receiver is not empty, an empty Block raises
/// NSInvalidArgumentException.
template <class KeySelector>
[[nodiscard]] Ref<NSArray> linq_distinctWithBlock(const NSArray& receiver, KeySelector&& key) {
  static_assert(!detail::isNullptr<KeySelector>, "linq_distinctWithBlock needs a closure");
  if (detail::_isEmpty(receiver)) return detail::itself(receiver);
  std::vector<Value> firsts;
  if constexpr (!detail::isNullptr<KeySelector>) {
    detail::checkClosure(key, "linq_distinctWithBlock");
    detail::DistinctValues seen;
    detail::walk(
        receiver, [&](const Value& element) { return detail::valueFrom(key, element); },
        [&](const Value& element, const Value& found) {
          if (!found.isAbsent() && seen.add(found)) firsts.push_back(element);
          return true;
        });
  }
  return make<NSMutableArray>(std::move(firsts));
}

/// The elements that equal no element of the other array, as a mutable array. Repeated elements stay repeated. The
/// receiver itself if either array is empty or there is no other array.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_except(const NSArray& receiver, const Ref<NSArray>& other);

/// The distinct elements that equal an element of the other array, as a mutable array. The receiver itself, with its
/// repeated elements, if either array is empty or there is no other array. This is deliberate, although the
/// intersection with an empty set is empty.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_intersect(const NSArray& receiver, const Ref<NSArray>& other);

/// The distinct elements of the receiver, then the elements of the other array that are not among them yet, as a
/// mutable array. If the receiver is empty, the other array itself (an empty Ref if there is none). If there is no
/// other array or it is empty, the receiver itself. An array that is itself returned keeps its repeated elements.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_union(const NSArray& receiver, const Ref<NSArray>& other);

}  // namespace norvik
