#include "NorvikCore/linq/NSArray+LINQ_Generation.h"

#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/values/NSException.h"

#include <string>

namespace norvik::detail {

void raiseReceivingClass(const Class& receivingClass, const Class& wanted) {
  NSException::raise(NSInvalidArgumentException, "the class " + receivingClass.distinctName().str() +
                                                     " cannot create an empty " + wanted.distinctName().str());
}

Ref<NSArray> emptyArrayOf(const Class& receivingClass) {
  return collectionOf<NSArray>(receivingClass, receivingClass.makeObject());
}

void fill(NSArray& array, std::vector<Value> elements) {
  for (const Value& element : elements) checkPresent(element, "NSArray");
  CollectionAccess::elements(array) = std::move(elements);
}

std::vector<Value> roomFor(std::uint64_t count) {
  std::vector<Value> room;
  if (count > room.max_size())
    NSException::raise(NSRangeException, "there is no memory for " + std::to_string(count) + " elements");
  room.reserve(count);
  return room;
}

std::vector<Value> integers(std::int64_t from, std::int64_t to) {
  if (from == to) return {};
  const std::int64_t step = from < to ? 1 : -1;
  // Unsigned, because the distance may exceed the range of a signed number; it is at most 2^64 - 1.
  const std::uint64_t distance = from < to ? static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from)
                                           : static_cast<std::uint64_t>(from) - static_cast<std::uint64_t>(to);
  std::vector<Value> numbers = roomFor(distance == UINT64_MAX ? distance : distance + 1);
  for (std::int64_t number = from; number != to; number += step) numbers.emplace_back(number);
  numbers.emplace_back(to);
  return numbers;
}

std::vector<Value> repeats(const Value& object, std::int64_t count) {
  if (count < 1 || object.isAbsent()) return {};
  std::vector<Value> elements = roomFor(static_cast<std::uint64_t>(count));
  elements.resize(static_cast<std::size_t>(count), object);
  return elements;
}

}  // namespace norvik::detail
