#include "NorvikCore/platform/keyvalue/internal/CollectionOperators.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/keyvalue/internal/KeyPathText.h"
#include "NorvikCore/platform/values/DecimalSum.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace detail {
namespace {

/// Calls `use` with each element's value at the path, except absent and null values.
template <class Use>
void forEachValue(const NSArray& elements, const NSString& path, Use&& use) {
  for (const Value& element : elements) {
    const Value value = valueForKeyPath(element, path);
    if (!value.isAbsent() && !value.isNull()) use(value);
  }
}

Decimal sumOf(const NSArray& elements, const NSString& path) {
  DecimalSum sum;
  forEachValue(elements, path, [&](const Value& value) { sum += value.as<Decimal>(); });
  return sum.value();
}

Value average(const NSArray& elements, const NSString& path) {
  if (elements.count() == 0) return Decimal(0);
  return sumOf(elements, path) / Decimal(elements.count());
}

Value extreme(const NSArray& elements, const NSString& path, NSComparisonResult wanted) {
  Value found;
  forEachValue(elements, path, [&](const Value& value) {
    if (found.isAbsent() || value.compare(found) == wanted) found = value;
  });
  return found;
}

Value unite(const NSArray& elements, const NSString& path, bool isDistinct) {
  std::vector<Value> values;
  forEachValue(elements, path, [&](const Value& value) { values.push_back(value); });
  if (isDistinct) return make<NSSet>(std::move(values))->allObjects();
  return make<NSArray>(std::move(values));
}

/// The elements of the elements.
Ref<NSArray> flattened(const NSArray& collections, const NSString& keyPath) {
  std::vector<Value> elements;
  for (const Value& each : collections) {
    if (const auto* array = each.object<NSArray>()) {
      elements.insert(elements.end(), array->begin(), array->end());
    } else if (const auto* set = each.object<NSSet>()) {
      elements.insert(elements.end(), set->begin(), set->end());
    } else if (!each.isNull()) {
      NSException::raise(NSInvalidArgumentException, "\"" + keyPath + "\" unites collections, and an element is a " +
                                                         each.classObject().distinctName().str());
    }
  }
  return make<NSArray>(std::move(elements));
}

}  // namespace

Value applyOperator(const NSArray& elements, const NSString& keyPath) {
  const auto [name, rest] = firstKey(keyPath);
  if (name == "@count") return elements.count();
  if (rest && !rest->empty()) {
    const NSString& path = *rest;
    if (name == "@sum") return sumOf(elements, path);
    if (name == "@avg") return average(elements, path);
    if (name == "@max") return extreme(elements, path, NSOrderedDescending);
    if (name == "@min") return extreme(elements, path, NSOrderedAscending);
    if (name == "@unionOfObjects") return unite(elements, path, false);
    if (name == "@distinctUnionOfObjects") return unite(elements, path, true);
    if (name == "@unionOfArrays") return unite(*flattened(elements, keyPath), path, false);
    if (name == "@distinctUnionOfArrays") return unite(*flattened(elements, keyPath), path, true);
  }
  NSException::raise(NSInvalidArgumentException,
                     "\"" + keyPath + "\" is not a collection operator that is followed by a key path");
}

namespace {

Ref<NSArray> valuesForKey(const NSArray& elements, const NSString& key) {
  std::vector<Value> values;
  values.reserve(elements.count());
  for (const Value& element : elements) {
    Value value = valueForKey(element, key);
    values.push_back(value.isAbsent() ? Value::null() : std::move(value));
  }
  return make<NSArray>(std::move(values));
}

void setValuesForKey(const NSArray& elements, const Value& value, const NSString& key) {
  for (const Value& element : elements) {
    if (element.isNull()) continue;
    NSObject* object = element.object();
    if (!object) raiseElement(element, NSObject::staticClass());
    object->setValue_forKey(value, key);
  }
}

}  // namespace
}  // namespace detail

Value NSArray::valueForKey(const NSString& key) const {
  return detail::isOperator(key) ? detail::applyOperator(*this, key) : Value(detail::valuesForKey(*this, key));
}

Value NSArray::valueForKeyPath(const NSString& keyPath) const {
  return detail::isOperator(keyPath) ? detail::applyOperator(*this, keyPath) : NSObject::valueForKeyPath(keyPath);
}

void NSArray::setValue_forKey(const Value& value, const NSString& key) { detail::setValuesForKey(*copy(), value, key); }

Value NSSet::valueForKey(const NSString& key) const { return allObjects()->valueForKey(key); }

Value NSSet::valueForKeyPath(const NSString& keyPath) const { return allObjects()->valueForKeyPath(keyPath); }

void NSSet::setValue_forKey(const Value& value, const NSString& key) { allObjects()->setValue_forKey(value, key); }

Value NSDictionary::valueForKey(const NSString& key) const {
  return detail::isOperator(key) ? detail::applyOperator(*allValues(), key) : objectForKey(key);
}

Value NSDictionary::valueForKeyPath(const NSString& keyPath) const {
  return detail::isOperator(keyPath) ? detail::applyOperator(*allValues(), keyPath)
                                     : NSObject::valueForKeyPath(keyPath);
}

void NSDictionary::setValue_forKey(const Value& value, const NSString& key) { setValue_forUndefinedKey(value, key); }

}  // namespace norvik
