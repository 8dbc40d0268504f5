// NorvikCore/linq/NSDictionary+LINQ_Generation.h - dictionaries from the keys 0, 1, 2 ... to numbers or repeated
// objects.
//
//   linq_from<NSDictionary>(5, 7);                               // {0: 5, 1: 6, 2: 7}
//   linq_repeat<NSMutableDictionary>("unpaid", 12);              // {0: "unpaid", ... 11: "unpaid"}
//
// The class of the result is the template argument; without one, these operations create arrays. The rules of
// NSArray+LINQ_Generation.h for classes that are known only at run time, and for memory, apply here too.
#pragma once

#include "NorvikCore/linq/NSArray+LINQ_Generation.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik {
namespace detail {

/// A dictionary of that class, from the indexes of the values to the values. Raises NSInvalidArgumentException if no
/// empty dictionary of that class can be created.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> indexed(const Class& receivingClass, std::vector<Value> values);

}  // namespace detail

template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_empty(const Class& receivingClass = Dictionary::staticClass()) {
  return detail::collectionOf<Dictionary>(receivingClass, detail::indexed(receivingClass, {}));
}

/// The values are the integers from the first to the second, both included, upwards or downwards. If both are equal,
/// the dictionary is empty. This is deliberate.
template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_from(const Class& receivingClass, std::int64_t from, std::int64_t to) {
  return detail::collectionOf<Dictionary>(receivingClass, detail::indexed(receivingClass, detail::integers(from, to)));
}
template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_from(std::int64_t from, std::int64_t to) {
  return linq_from<Dictionary>(Dictionary::staticClass(), from, to);
}

/// The value of each entry is the object, and there are `count` entries. Empty if the count is below 1 or the object is
/// absent.
template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_repeat(const Class& receivingClass, const Value& object, std::int64_t count) {
  return detail::collectionOf<Dictionary>(receivingClass,
                                          detail::indexed(receivingClass, detail::repeats(object, count)));
}
template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_repeat(const Value& object, std::int64_t count) {
  return linq_repeat<Dictionary>(Dictionary::staticClass(), object, count);
}

}  // namespace norvik
