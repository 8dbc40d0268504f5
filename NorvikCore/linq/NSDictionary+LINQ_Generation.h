// NorvikCore/linq/NSDictionary+LINQ_Generation.h - dictionaries from the numbers 0, 1, 2 ... to numbers or repeats.
//
//   linq_from<NSDictionary>(5, 7);                               // {0: 5, 1: 6, 2: 7}
//   linq_repeat<NSMutableDictionary>("unpaid", 12);              // {0: "unpaid", ... 11: "unpaid"}
//
// The class of the result is the template argument; without one, these operations make arrays. What
// NSArray+LINQ_Generation.h says of classes that are known only at run time and of memory holds here too.
#pragma once

#include "NorvikCore/linq/NSArray+LINQ_Generation.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik {
namespace detail {

/// A dictionary of that class, from the indexes of the values to them; raises NSInvalidArgumentException where no empty
/// one can be made.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> indexed(const Class& receivingClass, std::vector<Value> values);

}  // namespace detail

template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_empty(const Class& receivingClass = Dictionary::staticClass()) {
  return detail::collectionOf<Dictionary>(receivingClass, detail::indexed(receivingClass, {}));
}

/// To the integers from the first to the second, both included, upwards or downwards. Where both are equal, the
/// dictionary is empty. This is deliberate.
template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_from(const Class& receivingClass, std::int64_t from, std::int64_t to) {
  return detail::collectionOf<Dictionary>(receivingClass, detail::indexed(receivingClass, detail::integers(from, to)));
}
template <std::derived_from<NSDictionary> Dictionary>
[[nodiscard]] Ref<Dictionary> linq_from(std::int64_t from, std::int64_t to) {
  return linq_from<Dictionary>(Dictionary::staticClass(), from, to);
}

/// To the object, so many times; empty where the count is below 1 or the object absent.
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
