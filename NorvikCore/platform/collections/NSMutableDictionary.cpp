#include "NorvikCore/platform/collections/NSMutableDictionary.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/object/AnnouncedChange.h"

#include <utility>

namespace norvik {

NSMutableDictionary::~NSMutableDictionary() = default;

Ref<NSMutableDictionary> NSMutableDictionary::dictionaryWithCapacity(std::size_t capacity) {
  auto dictionary = make<NSMutableDictionary>();
  dictionary->table_.reserve(capacity);
  return dictionary;
}

// Replaced or removed values are released only when the table is consistent again, because a destroyed object may call
// back.

void NSMutableDictionary::setObject(Value object, Value key) {
  detail::checkPresent(key, "setObject:forKey:, key");
  detail::checkPresent(object, "setObject:forKey:, value");
  if (Entry* present = table_.find(key)) {
    std::swap(present->value, object);
  } else {
    table_.insert({std::move(key), std::move(object)});
  }
  ++changes_;
}

void NSMutableDictionary::addEntriesFromDictionary(const NSDictionary& other) {
  if (&other == this) return;
  for (const Entry& entry : other) setObject(entry.value, entry.key);
}

void NSMutableDictionary::setDictionary(const NSDictionary& other) {
  const Ref<NSDictionary> entries = other.copy();
  removeAllObjects();
  addEntriesFromDictionary(*entries);
}

void NSMutableDictionary::removeObjectForKey(const Value& key) {
  const Entry removed = table_.remove(key);
  if (!removed.key.isAbsent()) ++changes_;
}

void NSMutableDictionary::removeObjectsForKeys(const NSArray& keys) {
  for (const Value& key : keys) removeObjectForKey(key);
}

void NSMutableDictionary::removeAllObjects() {
  if (count() == 0) return;
  ++changes_;
  detail::releaseAll(table_.takeAll());
}

Ref<NSDictionary> NSMutableDictionary::copy() const { return NSDictionary::dictionaryWithDictionary(*this); }

void NSMutableDictionary::setValue_forKey(const Value& value, const NSString& key) {
  detail::changeProperty(*this, key.view(), [&] {
    if (value.isAbsent()) {
      removeObjectForKey(key);
    } else {
      setObject(value, key);
    }
  });
}

}  // namespace norvik
