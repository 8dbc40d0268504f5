// NorvikCore/linq/NSArray+LINQ_Grouping.h - the elements of an array grouped by a key.
//
//   auto byDepartment = linq_groupBy(*payslips, &Payslip::department);
//   for (const auto& [department, group] : *byDepartment) ...
//
// A key may be any value, also the null marker. If a closure returns no key for an element, the query raises
// NSInvalidArgumentException, so that no payslip is lost from a total. Return Value::null() to group such elements. An
// empty Block raises the same exception. LINQ.h tells what all queries have in common.
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

/// Groups elements by their keys. It first records the number of each element's group and counts the elements of each
/// group, so that each group is then filled in memory of the right size.
class NK_EXPORT Grouping {
 public:
  /// For about `count` elements.
  explicit Grouping(std::size_t count);

  /// Adds the next element with its key.
  void add(const Value& element, const Value& key);
  void add(const Value& element, const NSString& key);  // the same, without creating a Value for the key
  /// `elements` are the elements that were added, in the same order. Returns a dictionary from each key, in the order
  /// of the keys' first elements, to a mutable array of its elements.
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
  std::vector<std::uint32_t> likely_;  ///< by the address of a text's bytes: the group whose key may be that same text
  std::vector<std::uint32_t> numbers_;
  std::vector<Ref<NSObject>> objects_;  ///< the elements that are objects; retained early, while in the cache
};

}  // namespace detail

/// A mutable dictionary from each key to a mutable array of the elements with that key. The keys are in the order of
/// their first elements; the elements keep their order. Of equal keys (5 and 5.00) the first is kept.
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

/// An array with one dictionary for each element, in order. The dictionary has one entry, from the element's key to the
/// element.
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

/// Takes an array of dictionaries and returns, as a mutable array, those that have an entry for the key. An element
/// that is not a dictionary raises NSInvalidArgumentException. For an absent key the result is empty.
[[nodiscard]] NK_EXPORT Ref<NSMutableArray> linq_lookup(const NSArray& receiver, const Value& key);

}  // namespace norvik
