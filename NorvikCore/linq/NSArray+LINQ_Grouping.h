// NorvikCore/linq/NSArray+LINQ_Grouping.h - the elements of an array by a key.
//
//   auto byDepartment = linq_groupBy(*payslips, &Payslip::department);
//   for (const auto& [department, group] : *byDepartment) ...
//
// A key may be any value; the null marker is one. A closure that gives no key for an element raises
// NSInvalidArgumentException, so that no payslip is lost from a total: return Value::null() to keep such elements
// together. An empty Block raises the same. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/OrderedTable.h"

#include <cstdint>
#include <span>
#include <vector>

namespace norvik {
namespace detail {

/// Puts elements below their keys. First each element is given the number of its group, so that the groups are then
/// filled without ever growing.
class NK_EXPORT Grouping {
 public:
  /// For so many elements.
  explicit Grouping(std::size_t count);

  /// The next element and its key.
  void add(const Value& element, const Value& key);
  void add(const Value& element, const NSString& key);  // the same, without a Value made of the key
  /// From each key, in the order of their first elements, to a mutable array of the elements, which are those added.
  [[nodiscard]] Ref<NSMutableDictionary> groups(std::span<const Value> elements) &&;

 private:
  struct Group {
    Value key;
    std::size_t count = 0;
  };
  template <class Key, class IsKey>
  std::size_t find(std::size_t hash, const Key& key, IsKey isKey);
  void addTo(std::size_t number, const Value& element);

  std::vector<Group> groups_;
  PositionIndex index_;
  std::vector<std::uint32_t> likely_;  ///< by the place of a text's bytes: the group whose key may be that very text
  std::vector<std::uint32_t> numbers_;
  std::vector<Ref<NSObject>> objects_;  ///< of the elements that are objects, kept while they are at hand
};

}  // namespace detail

/// A mutable dictionary from each key, in the order of their first elements, to a mutable array of the elements with
/// that key, in their order. Of keys that are equal (5 and 5.00) the first is kept.
template <class KeySelector>
[[nodiscard]] Ref<NSMutableDictionary> linq_groupBy(const NSArray& receiver, KeySelector&& key) {
  static_assert(!detail::isNullptr<KeySelector>, "linq_groupBy needs a closure");
  const Ref<const NSArray> kept(&receiver);
  detail::Grouping groups(receiver.count());
  if constexpr (!detail::isNullptr<KeySelector>) {
    detail::checkClosure(key, "linq_groupBy");
    detail::walk(
        receiver, [&](const Value& element) -> decltype(auto) { return detail::callWith(key, element); },
        [&](const Value& element, const auto& found) {
          if constexpr (std::is_same_v<decltype(found), const NSString&>)
            groups.add(element, found);
          else
            groups.add(element, detail::valueOf(found));
          return true;
        });
  }
  return std::move(groups).groups(receiver.elements());
}

/// For each element, in order, a dictionary with one entry, from its key to the element.
template <class KeySelector>
[[nodiscard]] Ref<NSArray> linq_toLookup(const NSArray& receiver, KeySelector&& key) {
  static_assert(!detail::isNullptr<KeySelector>, "linq_toLookup needs a closure");
  std::vector<Value> entries;
  if constexpr (!detail::isNullptr<KeySelector>) {
    detail::checkClosure(key, "linq_toLookup");
    entries.reserve(receiver.count());
    detail::walk(
        receiver, [&](const Value& element) { return detail::valueFrom(key, element); },
        [&](const Value& element, Value&& found) {
          entries.push_back(NSDictionary::dictionaryWithObject(element, std::move(found)));
          return true;
        });
  }
  return make<NSArray>(std::move(entries));
}

/// Of an array of dictionaries, those that have an entry for the key, as a mutable array. An element that is no
/// dictionary raises NSInvalidArgumentException. An absent key finds none.
[[nodiscard]] NK_EXPORT Ref<NSMutableArray> linq_lookup(const NSArray& receiver, const Value& key);

}  // namespace norvik
