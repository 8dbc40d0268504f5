#include "NorvikCore/platform/collections/NSDictionary.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <utility>

namespace norvik {

NSDictionary::NSDictionary(std::vector<Entry> entries) {
  table_.reserve(entries.size());
  for (Entry& entry : entries) {
    detail::checkPresent(entry.key, "NSDictionary, key");
    detail::checkPresent(entry.value, "NSDictionary, value");
    const auto [present, isNew] = table_.insert(Entry(entry));
    if (!isNew) present->value = std::move(entry.value);
  }
}

NSDictionary::~NSDictionary() { detail::releaseAll(table_.takeAll()); }

Ref<NSDictionary> NSDictionary::dictionaryWithObject(Value object, Value key) {
  return dictionaryWith({{std::move(key), std::move(object)}});
}

Ref<NSDictionary> NSDictionary::dictionaryWithObjects(const NSArray& objects, const NSArray& keys) {
  if (objects.count() != keys.count()) {
    NSException::raise(NSInvalidArgumentException, "dictionaryWithObjects:forKeys: " + std::to_string(objects.count()) +
                                                       " objects for " + std::to_string(keys.count()) + " keys");
  }
  std::vector<Entry> entries;
  entries.reserve(keys.count());
  for (std::size_t i = 0; i < keys.count(); ++i) entries.push_back({keys[i], objects[i]});
  return make<NSDictionary>(std::move(entries));
}

Ref<NSDictionary> NSDictionary::dictionaryWithDictionary(const NSDictionary& other) {
  return make<NSDictionary>(std::vector<Entry>(other.begin(), other.end()));
}

Ref<NSArray> NSDictionary::allKeys() const {
  std::vector<Value> keys;
  keys.reserve(count());
  for (const Entry& entry : *this) keys.push_back(entry.key);
  return make<NSArray>(std::move(keys));
}

Ref<NSArray> NSDictionary::allValues() const {
  std::vector<Value> values;
  values.reserve(count());
  for (const Entry& entry : *this) values.push_back(entry.value);
  return make<NSArray>(std::move(values));
}

Ref<NSArray> NSDictionary::allKeysForObject(const Value& object) const {
  std::vector<Value> keys;
  for (const Entry& entry : *this) {
    if (entry.value == object) keys.push_back(entry.key);
  }
  return make<NSArray>(std::move(keys));
}

Ref<NSArray> NSDictionary::objectsForKeys(const NSArray& keys, const Value& marker) const {
  std::vector<Value> values;
  values.reserve(keys.count());
  for (const Value& key : keys) {
    const Value* found = find(key);
    values.push_back(found ? *found : marker);
  }
  return make<NSArray>(std::move(values));
}

Ref<NSDictionary> NSDictionary::copy() const { return ref(const_cast<NSDictionary&>(*this)); }

Ref<NSMutableDictionary> NSDictionary::mutableCopy() const {
  return make<NSMutableDictionary>(std::vector<Entry>(begin(), end()));
}

bool NSDictionary::isEqual(const NSObject& other) const {
  if (this == &other) return true;
  const auto* dictionary = dynamic_cast<const NSDictionary*>(&other);
  if (!dictionary || count() != dictionary->count()) return false;
  detail::Comparison comparison(*this, other);
  return comparison.isKnown() || comparison.conclude(std::all_of(begin(), end(), [&](const Entry& entry) {
    const Value* found = dictionary->find(entry.key);
    return found && *found == entry.value;
  }));
}

std::size_t NSDictionary::hash() const {
  std::size_t hash = count();
  for (const Entry& entry : *this) hash += detail::elementHash(entry.key) * 31 + detail::elementHash(entry.value);
  return hash;
}

NSString NSDictionary::description() const { return detail::describeCollection(*this); }

}  // namespace norvik
