// NorvikCore/platform/collections/NSDictionary.h - an immutable map from keys to values.
//
//   Ref<NSDictionary> rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}});
//   rates->objectForKey("basic").as<Decimal>();       // 0.20
//   rates->objectForKey("top").isAbsent();            // true
//   for (const auto& [band, rate] : *rates) NSLog("%@: %@", band, rate);       // basic, then higher
//   for (auto [band, rate] : rates->as<NSString, Decimal>()) sum += rate;     // raises if a value is no number
//
// Keys are any values, usually texts; entries are enumerated in the order in which their keys were first inserted.
// Looking up a key takes constant time and allocates nothing, even for a literal. A key that is an object must not
// change its hash while it is in the dictionary. An absent key or value raises NSInvalidArgumentException;
// Value::null() represents it.
//
// If a range-based for iterates over an NSMutableDictionary that is changed meanwhile, the loop raises
// NSGenericException at its next step. The loop does not retain the dictionary: hold it by a Ref.
//
// References to entries stay valid until the dictionary changes or is destroyed. Threads: any number may read; an
// NSMutableDictionary is confined to one at a time.
#pragma once

#include "NorvikCore/platform/collections/Enumeration.h"
#include "NorvikCore/platform/collections/OrderedTable.h"

#include <initializer_list>
#include <string_view>
#include <vector>

namespace norvik {

class NSArray;
class NSMutableDictionary;

class NK_EXPORT NSDictionary : public NSObject {
  NK_OBJECT(NSDictionary, NSObject)

  /// A key with its value.
  struct Entry {
    Value key, value;
    friend const Value& keyOf(const Entry& entry) noexcept { return entry.key; }
  };

  using const_iterator = detail::CheckedIterator<Entry, true>;
  using iterator = const_iterator;
  using value_type = Entry;

  NSDictionary() noexcept = default;
  /// If several entries have equal keys, the value of the last one is used.
  explicit NSDictionary(std::vector<Entry> entries);
  ~NSDictionary() override;

  [[nodiscard]] static Ref<NSDictionary> dictionary() { return make<NSDictionary>(); }
  [[nodiscard]] static Ref<NSDictionary> dictionaryWith(std::initializer_list<Entry> entries) {
    return make<NSDictionary>(std::vector<Entry>(entries));
  }
  [[nodiscard]] static Ref<NSDictionary> dictionaryWithObject(Value object, Value key);
  /// Raises NSInvalidArgumentException if the numbers of objects and keys differ.
  [[nodiscard]] static Ref<NSDictionary> dictionaryWithObjects(const NSArray& objects, const NSArray& keys);
  [[nodiscard]] static Ref<NSDictionary> dictionaryWithDictionary(const NSDictionary& other);

  [[nodiscard]] std::size_t count() const noexcept { return table_.count(); }
  [[nodiscard]] std::size_t size() const noexcept { return count(); }
  [[nodiscard]] bool empty() const noexcept { return count() == 0; }
  /// Absent if there is no such key.
  [[nodiscard]] Value objectForKey(const Value& key) const {
    const Value* found = find(key);
    return found ? *found : Value();
  }
  template <detail::PlainText Text>
  [[nodiscard]] Value objectForKey(const Text& key) const {
    const Value* found = find(key);
    return found ? *found : Value();
  }
  [[nodiscard]] Value operator[](const Value& key) const { return objectForKey(key); }
  template <detail::PlainText Text>
  [[nodiscard]] Value operator[](const Text& key) const {
    return objectForKey(key);
  }
  /// A pointer to the value, without a copy; null if there is none.
  [[nodiscard]] const Value* find(const Value& key) const {
    const Entry* entry = table_.find(key);
    return entry ? &entry->value : nullptr;
  }
  template <detail::PlainText Text>
  [[nodiscard]] const Value* find(const Text& key) const {
    return find(Value(NSString::borrowing(std::string_view(key))));  // borrowed only during the call
  }

  [[nodiscard]] const_iterator begin() const noexcept { return iteratorAt(0); }
  [[nodiscard]] const_iterator end() const noexcept { return iteratorAt(table_.entries().size()); }
  /// A view of the entries as pairs of a key and a value, each as by NSArray::as, with forward iterators:
  /// `rates->as<NSString, Decimal>() | std::views::values`.
  template <class Key, class T>
  [[nodiscard]] detail::ElementsAs<detail::ReadEntry<Key, T>, NSDictionary> as() const noexcept {
    return detail::ElementsAs<detail::ReadEntry<Key, T>, NSDictionary>(*this);
  }
  [[nodiscard]] Ref<NSArray> allKeys() const;
  [[nodiscard]] Ref<NSArray> allValues() const;
  [[nodiscard]] Ref<NSArray> allKeysForObject(const Value& object) const;
  /// The values of these keys, in the order of the keys, with `marker` for each missing key.
  [[nodiscard]] Ref<NSArray> objectsForKeys(const NSArray& keys, const Value& marker) const;
  [[nodiscard]] bool isEqualToDictionary(const NSDictionary& other) const { return isEqual(other); }

  /// An immutable dictionary: this one, unless it is an NSMutableDictionary.
  [[nodiscard]] virtual Ref<NSDictionary> copy() const;
  [[nodiscard]] Ref<NSMutableDictionary> mutableCopy() const;

  /// Equal to any dictionary with equal values for equal keys, in any order, mutable or not.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// One entry per line, in braces; texts are quoted unless they are one plain word.
  [[nodiscard]] NSString description() const override;

  /// The value for that key. A key that begins with '@' is a collection operator over the values.
  [[nodiscard]] Value valueForKey(const NSString& key) const override;
  /// A path that begins with '@' is that collection operator over the values.
  [[nodiscard]] Value valueForKeyPath(const NSString& keyPath) const override;
  void setValue_forKey(const Value& value, const NSString& key) override;

 protected:
  detail::OrderedTable<Entry> table_;
  std::uint64_t changes_ = 0;  ///< number of changes of an NSMutableDictionary

 private:
  friend struct detail::CollectionAccess;
  [[nodiscard]] const_iterator iteratorAt(std::size_t position) const noexcept {
    const auto& entries = table_.entries();
    return {entries.data() + position, entries.data() + entries.size(), *this, changes_};
  }
};

}  // namespace norvik
