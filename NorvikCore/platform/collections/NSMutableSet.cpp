#include "NorvikCore/platform/collections/NSMutableSet.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"

#include <utility>

namespace norvik {

NSMutableSet::~NSMutableSet() = default;

Ref<NSMutableSet> NSMutableSet::setWithCapacity(std::size_t capacity) {
  auto set = make<NSMutableSet>();
  set->table_.reserve(capacity);
  return set;
}

void NSMutableSet::addObject(Value object) {
  detail::checkPresent(object, "addObject:");
  if (table_.insert(std::move(object)).second) ++changes_;
}

void NSMutableSet::addObjectsFromArray(const NSArray& array) {
  for (const Value& object : array) addObject(object);
}

void NSMutableSet::removeObject(const Value& object) {
  const Value removed = table_.remove(object);  // released when the table is consistent again
  if (!removed.isAbsent()) ++changes_;
}

void NSMutableSet::removeAllObjects() {
  if (count() == 0) return;
  ++changes_;
  detail::releaseAll(table_.takeAll());
}

void NSMutableSet::unionSet(const NSSet& other) {
  if (&other != this) addObjectsFromArray(*other.allObjects());
}

void NSMutableSet::minusSet(const NSSet& other) {
  const Ref<NSArray> objects = other.allObjects();  // `other` may be this set
  for (const Value& object : *objects) removeObject(object);
}

void NSMutableSet::intersectSet(const NSSet& other) {
  const Ref<NSArray> objects = allObjects();
  for (const Value& object : *objects) {
    if (!other.containsObject(object)) removeObject(object);
  }
}

void NSMutableSet::setSet(const NSSet& other) {
  const Ref<NSArray> elements = other.allObjects();
  removeAllObjects();
  addObjectsFromArray(*elements);
}

Ref<NSSet> NSMutableSet::copy() const { return NSSet::setWithSet(*this); }

}  // namespace norvik
