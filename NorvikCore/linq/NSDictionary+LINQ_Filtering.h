// NorvikCore/linq/NSDictionary+LINQ_Filtering.h - the entries of a dictionary that pass a test.
//
//   linq_where(*rates, [](const NSString& band, const Decimal& rate) { return rate > 0 && band != "basic"; });
//   linq_whereKey(*rates, [](const NSString& band) { return band != "basic"; });
//   linq_whereValue(*rates, [](const Decimal& rate) { return rate > 0; });
//
// Entries keep their order. Without a predicate the result is the receiver itself. LINQ.h tells what all queries have
// in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik {
namespace detail {

using Entries = std::vector<NSDictionary::Entry>;

/// The entries for which `passes(entry)` is true.
template <class Passes>
Entries entriesWhere(const NSDictionary& receiver, Passes&& passes) {
  Entries passed;
  walk(receiver, passes, [&](const NSDictionary::Entry& entry, bool itPasses) {
    if (itPasses) passed.push_back(entry);
    return true;
  });
  return passed;
}

}  // namespace detail

/// The entries for which predicate(key, value) is true, as a new mutable dictionary.
template <class Predicate>
[[nodiscard]] detail::Filtered<Predicate, NSDictionary, NSMutableDictionary> linq_where(const NSDictionary& receiver,
                                                                                        Predicate&& predicate) {
  if constexpr (detail::canBeAbsent<Predicate>()) {
    if (detail::isAbsent(predicate)) return detail::itself(receiver);
  }
  if constexpr (!detail::isNullptr<Predicate>) {
    return make<NSMutableDictionary>(detail::entriesWhere(
        receiver, [&](const auto& entry) { return detail::test(predicate, entry.key, entry.value); }));
  }
  __builtin_unreachable();
}

/// The entries whose key makes the predicate true.
template <class Predicate>
[[nodiscard]] Ref<NSDictionary> linq_whereKey(const NSDictionary& receiver, Predicate&& predicate) {
  if (detail::isAbsent(predicate)) return detail::itself(receiver);
  if constexpr (!detail::isNullptr<Predicate>) {
    return make<NSDictionary>(
        detail::entriesWhere(receiver, [&](const auto& entry) { return detail::test(predicate, entry.key); }));
  }
  __builtin_unreachable();
}

/// The entries whose value makes the predicate true.
template <class Predicate>
[[nodiscard]] Ref<NSDictionary> linq_whereValue(const NSDictionary& receiver, Predicate&& predicate) {
  if (detail::isAbsent(predicate)) return detail::itself(receiver);
  if constexpr (!detail::isNullptr<Predicate>) {
    return make<NSDictionary>(
        detail::entriesWhere(receiver, [&](const auto& entry) { return detail::test(predicate, entry.value); }));
  }
  __builtin_unreachable();
}

/// The entries whose key or value is of class `wanted` or of a subclass, by the rules of linq_ofType for arrays.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_ofTypeKey(const NSDictionary& receiver, const Class& wanted);
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_ofTypeValue(const NSDictionary& receiver, const Class& wanted);
template <class T>
[[nodiscard]] Ref<NSDictionary> linq_ofTypeKey(const NSDictionary& receiver) {
  return linq_ofTypeKey(receiver, detail::classOf<T>());
}
template <class T>
[[nodiscard]] Ref<NSDictionary> linq_ofTypeValue(const NSDictionary& receiver) {
  return linq_ofTypeValue(receiver, detail::classOf<T>());
}

}  // namespace norvik
