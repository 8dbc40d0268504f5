#include "NorvikCore/platform/collections/NSMutableArray.h"

#include "NorvikCore/platform/collections/internal/CollectionAccess.h"

#include <iterator>
#include <utility>

namespace norvik {

NSMutableArray::~NSMutableArray() = default;

Ref<NSMutableArray> NSMutableArray::arrayWithCapacity(std::size_t capacity) {
  auto array = make<NSMutableArray>();
  array->elements_.reserve(capacity);
  return array;
}

// Removed elements are released only when the array is consistent again, because a destroyed object may call back.

void NSMutableArray::addObject(Value object) {
  detail::checkPresent(object, "addObject");
  elements_.push_back(std::move(object));
  ++changes_;
}

void NSMutableArray::addObjectsFromArray(const NSArray& other) {
  if (other.count() == 0) return;
  if (&other == this) return addObjectsFromArray(*copy());
  const auto added = other.elements();
  elements_.insert(elements_.end(), added.begin(), added.end());
  ++changes_;
}

void NSMutableArray::insertObject(Value object, std::size_t index) {
  detail::checkPresent(object, "insertObject:atIndex:");
  if (index > count()) raiseIndex("insertObject:atIndex:", index);
  elements_.insert(elements_.begin() + static_cast<std::ptrdiff_t>(first_ + index), std::move(object));
  ++changes_;
}

void NSMutableArray::replaceObjectAtIndex(std::size_t index, Value object) {
  detail::checkPresent(object, "replaceObjectAtIndex:withObject:");
  if (index >= count()) raiseIndex("replaceObjectAtIndex:withObject:", index);
  ++changes_;
  std::swap(elements_[first_ + index], object);
}

void NSMutableArray::exchangeObjectAtIndex(std::size_t index, std::size_t other) {
  if (index >= count()) raiseIndex("exchangeObjectAtIndex:withObjectAtIndex:", index);
  if (other >= count()) raiseIndex("exchangeObjectAtIndex:withObjectAtIndex:", other);
  std::swap(elements_[first_ + index], elements_[first_ + other]);
  ++changes_;
}

void NSMutableArray::setArray(const NSArray& other) {
  const auto from = other.elements();
  replaceAll(std::vector<Value>(from.begin(), from.end()));
}

void NSMutableArray::removeObjectAtIndex(std::size_t index) {
  if (index >= count()) raiseIndex("removeObjectAtIndex:", index);
  const Value removed = std::exchange(elements_[first_ + index], Value());
  if (index == 0) {
    ++first_;
    // The room of removed elements is released when it is half of the whole, so a queue moves each element about once.
    if (2 * first_ >= elements_.size()) giveUpRoom();
  } else {
    elements_.erase(elements_.begin() + static_cast<std::ptrdiff_t>(first_ + index));
  }
  ++changes_;
}

void NSMutableArray::removeLastObject() {
  if (count() > 0) removeObjectAtIndex(count() - 1);
}

void NSMutableArray::removeAllObjects() {
  if (count() > 0) replaceAll({});
}

void NSMutableArray::removeObjectsInRange(NSRange range) {
  checkRange("removeObjectsInRange:", range);
  if (range.length == 0) return;
  const auto first = elements_.begin() + static_cast<std::ptrdiff_t>(first_ + range.location);
  const auto last = first + static_cast<std::ptrdiff_t>(range.length);
  std::vector<Value> removed(std::make_move_iterator(first), std::make_move_iterator(last));
  elements_.erase(first, last);
  ++changes_;
}

void NSMutableArray::removeObject(const Value& object) {
  removeObjectsPassingTest([wanted = object](const Value& element) { return element == wanted; });
}

void NSMutableArray::removeObjectIdenticalTo(const Value& object) {
  removeObjectsPassingTest([wanted = object](const Value& element) { return element.isIdenticalTo(wanted); });
}

void NSMutableArray::removeObjectsInArray(const NSArray& other) {
  const Ref<NSArray> others = other.copy();
  removeObjectsPassingTest([&](const Value& element) { return others->containsObject(element); });
}

void NSMutableArray::sort() {
  sortUsingComparator([](const Value& a, const Value& b) { return a.compare(b); });
}

Ref<NSArray> NSMutableArray::copy() const { return make<NSArray>(values()); }

void NSMutableArray::replaceAll(std::vector<Value> elements) noexcept {
  elements_.swap(elements);
  first_ = 0;
  ++changes_;
  detail::releaseAll(std::move(elements));
}

}  // namespace norvik
