// NorvikCore/values/NKKeyValuePair.h - a key and a value: an item of a pop-up list, with its number and its name.
//
//   Ref<NSMutableArray> months = NKKeyValuePair::pairsFromDictionary(*NSDictionary::dictionaryWith({{4, "April"}}));
//   NKKeyValuePair::pairWithId(4, *months)->name();                // "April"
//
// Both properties may be read and set on any thread. The class of new pairs is the template argument, NKKeyValuePair by
// default. In the overloads with a Class as first argument, that class is chosen at run time; a class that is not a
// pair class raises NSInvalidArgumentException.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/export.h"

#include <concepts>
#include <cstdint>

namespace norvik {

class NK_EXPORT NKKeyValuePair : public NSObject {
  NK_OBJECT(NKKeyValuePair, NSObject)
  NK_ATOMIC_PROPERTY(Value, key, setKey)
  NK_ATOMIC_PROPERTY(Value, value, setValue)
  NK_COMPUTED_PROPERTY(std::int32_t, id)
  NK_COMPUTED_PROPERTY(Value, name)
  NK_AFFECTED_BY(id, key)
  NK_AFFECTED_BY(name, value)
  ~NKKeyValuePair() override;

  template <std::derived_from<NKKeyValuePair> Pair = NKKeyValuePair>
  [[nodiscard]] static Ref<Pair> pairWithKey(const Value& key, const Value& value) {
    auto pair = make<Pair>();
    pair->setKey(key);
    pair->setValue(value);
    return pair;
  }
  [[nodiscard]] static Ref<NKKeyValuePair> pairWithKey(const Class& receivingClass, const Value& key,
                                                       const Value& value);

  /// A pair for each element, which is both its key and its value.
  template <std::derived_from<NKKeyValuePair> Pair = NKKeyValuePair>
  [[nodiscard]] static Ref<NSMutableArray> pairsFromArray(const NSArray& array) {
    return pairsOf(array, [](const Value& each) { return pairWithKey<Pair>(each, each); });
  }
  [[nodiscard]] static Ref<NSMutableArray> pairsFromArray(const Class& receivingClass, const NSArray& array);

  /// A pair for each entry, in the order of the entries.
  template <std::derived_from<NKKeyValuePair> Pair = NKKeyValuePair>
  [[nodiscard]] static Ref<NSMutableArray> pairsFromDictionary(const NSDictionary& dictionary) {
    return pairsOf(dictionary, [](const auto& entry) { return pairWithKey<Pair>(entry.key, entry.value); });
  }
  [[nodiscard]] static Ref<NSMutableArray> pairsFromDictionary(const Class& receivingClass,
                                                               const NSDictionary& dictionary);

  /// The first pair with that id, or an empty Ref. If an element before that pair is not a pair, it raises
  /// NSInvalidArgumentException.
  [[nodiscard]] static Ref<NKKeyValuePair> pairWithId(std::int32_t id, const NSArray& pairs);

  /// The key as an integer of 32 bits, converted as by intValue. A number loses its fraction; a text gives the number
  /// at its beginning ("12 April" is 12, "abc" 0). A value out of range gives the nearest end of the range. A key that
  /// is neither and has no intValue gives 0. So all pairs whose keys are not numbers have the id 0.
  [[nodiscard]] std::int32_t id() const;
  /// The value.
  [[nodiscard]] Value name() const { return value(); }

  /// "4 : April".
  [[nodiscard]] NSString description() const override;

 private:
  template <class Collection, class Make>
  static Ref<NSMutableArray> pairsOf(const Collection& collection, Make&& makePair) {
    auto pairs = NSMutableArray::arrayWithCapacity(collection.count());
    for (const auto& each : collection) pairs->addObject(makePair(each));
    return pairs;
  }
};

}  // namespace norvik
