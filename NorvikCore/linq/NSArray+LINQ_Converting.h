// NorvikCore/linq/NSArray+LINQ_Converting.h - dictionaries made from the elements of an array.
//
//   linq_toDictionaryWithKeyBlock(*employees, &Employee::payrollNumber);
//   linq_toDictionaryWithKeyBlock(*employees, &Employee::payrollNumber, &Employee::name);
//
// If several elements have equal keys, the dictionary keeps the key and the position of the first one and the value of
// the last one. A closure that returns no key raises NSInvalidArgumentException. LINQ.h tells what all queries have in
// common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"

#include <concepts>

namespace norvik {
namespace detail {

template <class KeySelector, class ValueSelector>
std::vector<NSDictionary::Entry> keyedEntries(const NSArray& receiver, KeySelector& key, ValueSelector& value) {
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(receiver.count());
  std::size_t index = 0;
  walk(
      receiver,
      [&](const Value& element) {
        NSDictionary::Entry entry;
        if constexpr (isNullptr<KeySelector>)
          entry.key = index;
        else
          entry.key = isAbsent(key) ? Value(index) : valueFrom(key, element);
        checkPresent(entry.key, "linq_toDictionaryWithKeyBlock:, key");
        if constexpr (!isNullptr<ValueSelector>) {
          if (!isAbsent(value)) entry.value = orNull(valueFrom(value, element));
        }
        return entry;
      },
      [&](const Value& element, NSDictionary::Entry&& entry) {
        if (entry.value.isAbsent()) entry.value = element;
        entries.push_back(std::move(entry));
        ++index;
        return true;
      });
  return entries;
}

}  // namespace detail

/// Maps each element's index to the element.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_toDictionary(const NSArray& receiver);

/// Maps each element's key to the element. An empty Block raises NSInvalidArgumentException.
template <class KeySelector>
[[nodiscard]] Ref<NSDictionary> linq_toDictionaryWithKeyBlock(const NSArray& receiver, KeySelector&& key) {
  static_assert(!detail::isNullptr<KeySelector>, "for the indexes as keys, call linq_toDictionary");
  detail::checkClosure(key, "linq_toDictionaryWithKeyBlock");
  auto element = nullptr;
  return make<NSDictionary>(detail::keyedEntries(receiver, key, element));
}

/// A mutable dictionary. Without a key selector the keys are the elements' indexes. Without a value selector the values
/// are the elements. The null marker is stored where the value selector returns nothing.
template <class KeySelector, class ValueSelector>
[[nodiscard]] Ref<NSMutableDictionary> linq_toDictionaryWithKeyBlock(const NSArray& receiver, KeySelector&& key,
                                                                     ValueSelector&& value) {
  return make<NSMutableDictionary>(detail::keyedEntries(receiver, key, value));
}

}  // namespace norvik
