// NorvikCore/linq/NSArray+LINQ_Sets.h - arrays as sets: without repeats, without or with the elements of another.
//
//   linq_distinct(*departments);
//   linq_distinctWithBlock(*payslips, &Payslip::department);      // the first payslip of each department
//   linq_except(*invited, paid);
//
// Elements are equal as Values are: 5 and 5.00 are one element, and the first is kept. Elements'
// isEqual and hash must not change an array. An absent other array is an empty Ref. Where two rules hold, the first one
// counts. Costs what hashing the elements costs, in constant time each. LINQ.h tells what all queries have in common.
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
  /// Whether it was not there before.
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

/// Each element once, at its first place, as a mutable array. An empty receiver is returned itself.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_distinct(const NSArray& receiver);

/// The first element of each key, as a mutable array. Elements for which the selector gives nothing are left out; the
/// null marker is a key. An empty receiver is returned itself; for another one, an empty Block raises
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

/// The elements that equal none of the other's, as a mutable array; what is repeated stays repeated. The receiver
/// itself where either array is empty or there is no other.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_except(const NSArray& receiver, const Ref<NSArray>& other);

/// The distinct elements that equal one of the other's, as a mutable array. The receiver itself, with its repeats,
/// where either array is empty or there is no other. This is deliberate: what it has in common with nothing is
/// everything.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_intersect(const NSArray& receiver, const Ref<NSArray>& other);

/// The distinct elements of the receiver and then those of the other that are not there yet, as a mutable array. The
/// other itself (empty if there is none) where the receiver is empty; the receiver itself where there is no other or it
/// is empty. Both come back with their repeats.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_union(const NSArray& receiver, const Ref<NSArray>& other);

}  // namespace norvik
