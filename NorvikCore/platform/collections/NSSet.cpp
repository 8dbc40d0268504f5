#include "NorvikCore/platform/collections/NSSet.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"

#include <algorithm>
#include <utility>

namespace norvik {
namespace {

std::vector<Value> valuesOf(const NSArray& array) { return {array.elements().begin(), array.elements().end()}; }
std::vector<Value> valuesOf(const NSSet& set) { return {set.begin(), set.end()}; }

}  // namespace

NSSet::NSSet(std::vector<Value> elements) {
  table_.reserve(elements.size());
  for (Value& element : elements) {
    detail::checkPresent(element, "NSSet");
    table_.insert(std::move(element));
  }
}

NSSet::~NSSet() { detail::releaseAll(table_.takeAll()); }

Ref<NSSet> NSSet::setWithArray(const NSArray& array) { return make<NSSet>(valuesOf(array)); }
Ref<NSSet> NSSet::setWithSet(const NSSet& other) { return make<NSSet>(valuesOf(other)); }
Ref<NSMutableSet> NSMutableSet::setWithArray(const NSArray& array) { return make<NSMutableSet>(valuesOf(array)); }

Ref<NSArray> NSSet::allObjects() const { return make<NSArray>(valuesOf(*this)); }

bool NSSet::isSubsetOfSet(const NSSet& other) const {
  return count() <= other.count() &&
         std::all_of(begin(), end(), [&](const Value& element) { return other.containsObject(element); });
}

bool NSSet::intersectsSet(const NSSet& other) const {
  return std::any_of(begin(), end(), [&](const Value& element) { return other.containsObject(element); });
}

Ref<NSSet> NSSet::setByAddingObject(const Value& object) const {
  std::vector<Value> sum = valuesOf(*this);
  sum.push_back(object);
  return make<NSSet>(std::move(sum));
}

Ref<NSSet> NSSet::setByAddingObjectsFromSet(const NSSet& other) const {
  return setByAddingObjectsFromArray(*other.allObjects());
}

Ref<NSSet> NSSet::setByAddingObjectsFromArray(const NSArray& array) const {
  std::vector<Value> sum = valuesOf(*this);
  sum.insert(sum.end(), array.elements().begin(), array.elements().end());
  return make<NSSet>(std::move(sum));
}

Ref<NSSet> NSSet::copy() const { return ref(const_cast<NSSet&>(*this)); }

Ref<NSMutableSet> NSSet::mutableCopy() const { return make<NSMutableSet>(valuesOf(*this)); }

bool NSSet::isEqual(const NSObject& other) const {
  if (this == &other) return true;
  const auto* set = dynamic_cast<const NSSet*>(&other);
  if (!set || count() != set->count()) return false;
  detail::Comparison comparison(*this, other);
  return comparison.isKnown() || comparison.conclude(isSubsetOfSet(*set));
}

std::size_t NSSet::hash() const {
  std::size_t hash = count();
  for (const Value& element : *this) hash += detail::elementHash(element);
  return hash;
}

NSString NSSet::description() const { return detail::describeCollection(*this); }

}  // namespace norvik
