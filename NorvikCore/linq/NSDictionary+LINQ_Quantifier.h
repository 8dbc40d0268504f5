// NorvikCore/linq/NSDictionary+LINQ_Quantifier.h - whether all entries of a dictionary, or any, pass a test.
//
//   linq_any(*rates, [](const NSString&, const Decimal& rate) { return rate > 0.40_dec; });
//
// LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik {

/// True if predicate(key, value) is true for every entry. The predicate is not called for the entries after the first
/// one for which it is false. True for an empty dictionary and without a predicate.
template <class Predicate>
[[nodiscard]] bool linq_all(const NSDictionary& receiver, Predicate&& predicate) {
  bool allPass = true;
  if (detail::isAbsent(predicate)) return allPass;
  if constexpr (!detail::isNullptr<Predicate>) {
    detail::walk(
        receiver, [&](const auto& entry) { return detail::test(predicate, entry.key, entry.value); },
        [&](const auto&, bool passes) { return allPass = passes; });
  }
  return allPass;
}

/// True if predicate(key, value) is true for at least one entry. The predicate is not called for the entries after that
/// one. False for an empty dictionary and without a predicate.
template <class Predicate>
[[nodiscard]] bool linq_any(const NSDictionary& receiver, Predicate&& predicate) {
  bool anyPasses = false;
  if (detail::isAbsent(predicate)) return anyPasses;
  if constexpr (!detail::isNullptr<Predicate>) {
    detail::walk(
        receiver, [&](const auto& entry) { return detail::test(predicate, entry.key, entry.value); },
        [&](const auto&, bool passes) { return !(anyPasses = passes); });
  }
  return anyPasses;
}

}  // namespace norvik
