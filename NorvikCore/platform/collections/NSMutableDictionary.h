// NorvikCore/platform/collections/NSMutableDictionary.h - a map from keys to values that can be changed in place.
//
//   auto totals = NSMutableDictionary::dictionary();
//   totals->setObject(1200_dec, "Sales");             // the value, then its key
//   totals->setObject(1350_dec, "Sales");             // replaces it; the key keeps its place in the order
//   totals->removeObjectForKey("Sales");
//
// NSDictionary.h describes what raises. A change while a range-based for iterates over the dictionary makes that loop
// raise NSGenericException. Setting a value counts as a change even if it was there before; removing a missing key does
// not. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik {

class NK_EXPORT NSMutableDictionary : public NSDictionary {
  NK_OBJECT(NSMutableDictionary, NSDictionary)

  NSMutableDictionary() noexcept = default;
  explicit NSMutableDictionary(std::vector<Entry> entries) : NSDictionary(std::move(entries)) {}
  ~NSMutableDictionary() override;

  [[nodiscard]] static Ref<NSMutableDictionary> dictionary() { return make<NSMutableDictionary>(); }
  /// Empty, with room for that many entries.
  [[nodiscard]] static Ref<NSMutableDictionary> dictionaryWithCapacity(std::size_t capacity);
  [[nodiscard]] static Ref<NSMutableDictionary> dictionaryWith(std::initializer_list<Entry> entries) {
    return make<NSMutableDictionary>(std::vector<Entry>(entries));
  }
  [[nodiscard]] static Ref<NSMutableDictionary> dictionaryWithDictionary(const NSDictionary& other) {
    return other.mutableCopy();
  }

  void setObject(Value object, Value key);
  void addEntriesFromDictionary(const NSDictionary& other);
  void setDictionary(const NSDictionary& other);
  /// No effect if there is no such key.
  void removeObjectForKey(const Value& key);
  void removeObjectsForKeys(const NSArray& keys);
  void removeAllObjects();

  /// An NSDictionary of the current entries.
  [[nodiscard]] Ref<NSDictionary> copy() const override;

  /// setObject, or removeObjectForKey if the value is absent; notifies the observers of the key.
  void setValue_forKey(const Value& value, const NSString& key) override;
};

}  // namespace norvik
