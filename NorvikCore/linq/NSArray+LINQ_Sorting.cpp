#include "NorvikCore/linq/NSArray+LINQ_Sorting.h"

#include "NorvikCore/linq/internal/KeyReader.h"

#include <algorithm>
#include <optional>

namespace norvik {
namespace {

/// The elements in the order of their keys. `keys` holds each element's key and position.
template <class Key, class IsBefore>
Ref<NSArray> inOrderOf(std::span<const Value> elements, std::vector<std::pair<Key, std::size_t>> keys,
                       IsBefore isBefore) {
  std::ranges::stable_sort(keys, [&](const auto& a, const auto& b) { return isBefore(a.first, b.first); });
  std::vector<Value> sorted;
  sorted.reserve(elements.size());
  for (const auto& [key, position] : keys) sorted.push_back(elements[position]);
  return make<NSArray>(std::move(sorted));
}

/// The elements in the order of their keys, if every key holds a Content, which `read` returns. Absent if a key holds
/// something else.
template <class Content>
std::optional<Ref<NSArray>> inOrderOfContents(std::span<const Value> elements, std::span<const Value> keys,
                                              const Content* (Value::*read)() const noexcept, bool ascending) {
  using Key = std::conditional_t<std::is_same_v<Content, NSString>, const NSString*, Content>;
  std::vector<std::pair<Key, std::size_t>> contents;
  contents.reserve(keys.size());
  for (const Value& key : keys) {
    const Content* content = (key.*read)();
    if (!content) return std::nullopt;
    if constexpr (std::is_pointer_v<Key>)
      contents.emplace_back(content, contents.size());
    else
      contents.emplace_back(*content, contents.size());
  }
  const auto compared = [](const Key& a, const Key& b) {
    if constexpr (std::is_pointer_v<Key>)
      return a->compare(*b);
    else
      return a.compare(b);
  };
  const NSComparisonResult wanted = ascending ? NSOrderedAscending : NSOrderedDescending;
  return inOrderOf(elements, std::move(contents), [&](const Key& a, const Key& b) { return compared(a, b) == wanted; });
}

bool isMissing(const Value& key) noexcept { return key.isAbsent() || key.isNull(); }

}  // namespace

Ref<NSArray> linq_orderByAscending(const NSArray& receiver) { return receiver.sortedArray(); }

Ref<NSArray> linq_orderByDescending(const NSArray& receiver) { return receiver.sortedArray()->reversedArray(); }

Ref<NSArray> linq_orderByKey(const NSArray& receiver, const NSString& keyPath, bool ascending) {
  std::vector<Value> elements, keys;
  elements.reserve(receiver.count());
  keys.reserve(receiver.count());
  detail::KeyReader read(keyPath);
  for (const Value& element : receiver) {
    elements.push_back(element);
    keys.push_back(read(elements.back()));
  }
  // Keys are usually all of one type. Then they sort several times as fast without the Values around them.
  if (auto sorted = inOrderOfContents<Decimal>(elements, keys, &Value::decimal, ascending)) return *sorted;
  if (auto sorted = inOrderOfContents<NSString>(elements, keys, &Value::string, ascending)) return *sorted;
  if (auto sorted = inOrderOfContents<Date>(elements, keys, &Value::date, ascending)) return *sorted;

  std::vector<std::pair<const Value*, std::size_t>> any;
  any.reserve(keys.size());
  for (const Value& key : keys) any.emplace_back(&key, any.size());
  return inOrderOf(elements, std::move(any), [ascending](const Value* a, const Value* b) {
    const Value &lesser = ascending ? *a : *b, &greater = ascending ? *b : *a;
    if (isMissing(lesser) || isMissing(greater)) return isMissing(lesser) && !isMissing(greater);
    return lesser.compare(greater) == NSOrderedAscending;
  });
}

Ref<NSMutableArray> linq_reverse(const NSArray& receiver) {
  const auto elements = receiver.elements();
  return make<NSMutableArray>(std::vector<Value>(elements.rbegin(), elements.rend()));
}

}  // namespace norvik
