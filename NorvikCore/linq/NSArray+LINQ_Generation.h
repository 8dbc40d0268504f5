// NorvikCore/linq/NSArray+LINQ_Generation.h - new arrays made from numbers, repeated objects or closures.
//
//   linq_from(1, 12);                                            // 1, 2, ... 12
//   linq_from<NSMutableArray>(12, 1);                            // 12, 11, ... 1, as a mutable array
//   linq_with([](int month) { return taxOf(month); }, 12);       // of the months 0 to 11
//
// The class of the result is the template argument, or NSArray without one. If the class is known only at run time, it
// is the first argument. It raises NSInvalidArgumentException if it is neither the template argument nor a subclass of
// it, or if no object of it can be created without arguments. More elements than memory can hold raise std::bad_alloc
// or NSRangeException. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"

#include <concepts>
#include <cstdint>

namespace norvik {
namespace detail {

/// An empty array of that class; raises NSInvalidArgumentException if none can be created.
[[nodiscard]] NK_EXPORT Ref<NSArray> emptyArrayOf(const Class& receivingClass);
/// Puts elements into a newly created array, whether it is mutable or not.
NK_EXPORT void fill(NSArray& array, std::vector<Value> elements);
[[nodiscard]] NK_EXPORT std::vector<Value> integers(std::int64_t from, std::int64_t to);
[[nodiscard]] NK_EXPORT std::vector<Value> repeats(const Value& object, std::int64_t count);
/// An empty vector with room for `count` elements. Raises NSRangeException if no memory can hold that many.
[[nodiscard]] NK_EXPORT std::vector<Value> roomFor(std::uint64_t count);
[[noreturn]] NK_EXPORT void raiseReceivingClass(const Class& receivingClass, const Class& wanted);

template <class Collection>
[[nodiscard]] Ref<Collection> collectionOf(const Class& receivingClass, const Ref<NSObject>& made) {
  auto collection = refCast<Collection>(made);
  if (!collection) raiseReceivingClass(receivingClass, Collection::staticClass());
  return collection;
}
template <class Array>
[[nodiscard]] Ref<Array> filled(const Class& receivingClass, std::vector<Value> elements) {
  auto array = collectionOf<Array>(receivingClass, emptyArrayOf(receivingClass));
  fill(*array, std::move(elements));
  return array;
}

template <class Make>
[[nodiscard]] std::vector<Value> made(Make& make, std::int64_t count) {
  if (count < 1 || isAbsent(make)) return {};
  if constexpr (isNullptr<Make>) {
    return {};
  } else {
    std::vector<Value> elements = roomFor(static_cast<std::uint64_t>(count));
    for (std::int64_t i = 0; i < count; ++i) elements.push_back(orNull(valueFrom(make, Value(i))));
    return elements;
  }
}

}  // namespace detail

template <std::derived_from<NSArray> Array = NSArray>
[[nodiscard]] Ref<Array> linq_empty(const Class& receivingClass = Array::staticClass()) {
  return detail::filled<Array>(receivingClass, {});
}

/// The integers from the first to the second, both included, upwards or downwards. If both are equal, the array is
/// empty. This is deliberate: from 2 to 2 gives nothing.
template <std::derived_from<NSArray> Array = NSArray>
[[nodiscard]] Ref<Array> linq_from(const Class& receivingClass, std::int64_t from, std::int64_t to) {
  return detail::filled<Array>(receivingClass, detail::integers(from, to));
}
template <std::derived_from<NSArray> Array = NSArray>
[[nodiscard]] Ref<Array> linq_from(std::int64_t from, std::int64_t to) {
  return linq_from<Array>(Array::staticClass(), from, to);
}

/// The object `count` times. Empty if the count is below 1 or the object is absent.
template <std::derived_from<NSArray> Array = NSArray>
[[nodiscard]] Ref<Array> linq_repeat(const Class& receivingClass, const Value& object, std::int64_t count) {
  return detail::filled<Array>(receivingClass, detail::repeats(object, count));
}
template <std::derived_from<NSArray> Array = NSArray>
[[nodiscard]] Ref<Array> linq_repeat(const Value& object, std::int64_t count) {
  return linq_repeat<Array>(Array::staticClass(), object, count);
}

/// The results of the closure for the numbers from 0 to count - 1; the null marker stands for a result of nothing.
/// Empty if the count is below 1 or there is no closure.
template <std::derived_from<NSArray> Array = NSArray, class Make>
[[nodiscard]] Ref<Array> linq_with(const Class& receivingClass, Make&& make, std::int64_t count) {
  return detail::filled<Array>(receivingClass, detail::made(make, count));
}
template <std::derived_from<NSArray> Array = NSArray, class Make>
[[nodiscard]] Ref<Array> linq_with(Make&& make, std::int64_t count) {
  return linq_with<Array>(Array::staticClass(), make, count);
}

}  // namespace norvik
