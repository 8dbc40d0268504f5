// NorvikCore/platform/collections/NSSet.h - an immutable set of distinct values.
//
//   Ref<NSSet> codes = NSSet::setWithObjects("1257L", "BR", "BR");
//   codes->count();                                   // 2
//   codes->containsObject("BR");                      // true
//   for (const Value& code : *codes) NSLog("%@", code);         // 1257L, then BR
//
// Of several equal elements the first one inserted is kept. Elements are enumerated in the order of insertion; finding
// one takes constant time. An object must not change its hash while it is in the set. An absent element raises
// NSInvalidArgumentException.
//
// If a range-based for iterates over an NSMutableSet that is changed meanwhile, the loop raises NSGenericException at
// its next step. The loop does not retain the set: hold it by a Ref (`as` does that). Threads: any number may read; an
// NSMutableSet is confined to one at a time.
#pragma once

#include "NorvikCore/platform/collections/Enumeration.h"
#include "NorvikCore/platform/collections/OrderedTable.h"

#include <initializer_list>
#include <vector>

namespace norvik {

class NSArray;
class NSMutableSet;

class NK_EXPORT NSSet : public NSObject {
  NK_OBJECT(NSSet, NSObject)

  using const_iterator = detail::CheckedIterator<Value, true>;
  using iterator = const_iterator;
  using value_type = Value;

  NSSet() noexcept = default;
  explicit NSSet(std::vector<Value> elements);
  ~NSSet() override;

  [[nodiscard]] static Ref<NSSet> set() { return make<NSSet>(); }
  [[nodiscard]] static Ref<NSSet> setWith(std::initializer_list<Value> objects) {
    return make<NSSet>(std::vector<Value>(objects));
  }
  template <class... V>
  [[nodiscard]] static Ref<NSSet> setWithObjects(V&&... objects) {
    return setWith({detail::elementOf(std::forward<V>(objects))...});
  }
  [[nodiscard]] static Ref<NSSet> setWithArray(const NSArray& array);
  [[nodiscard]] static Ref<NSSet> setWithSet(const NSSet& other);

  [[nodiscard]] std::size_t count() const noexcept { return table_.count(); }
  [[nodiscard]] std::size_t size() const noexcept { return count(); }
  [[nodiscard]] bool empty() const noexcept { return count() == 0; }
  [[nodiscard]] bool containsObject(const Value& object) const { return table_.find(object) != nullptr; }
  /// The element equal to `object`, or absent.
  [[nodiscard]] Value member(const Value& object) const {
    const Value* found = table_.find(object);
    return found ? *found : Value();
  }
  /// The first element; absent if the set is empty.
  [[nodiscard]] Value anyObject() const { return count() == 0 ? Value() : *begin(); }
  [[nodiscard]] Ref<NSArray> allObjects() const;

  [[nodiscard]] const_iterator begin() const noexcept { return iteratorAt(0); }
  [[nodiscard]] const_iterator end() const noexcept { return iteratorAt(table_.entries().size()); }
  /// A view of the elements like NSArray::as, with forward iterators.
  template <class T>
  [[nodiscard]] detail::ElementsAs<detail::ReadElement<T>, NSSet> as() const noexcept {
    return detail::ElementsAs<detail::ReadElement<T>, NSSet>(*this);
  }

  [[nodiscard]] bool isEqualToSet(const NSSet& other) const { return isEqual(other); }
  /// True if every element is also in the other set.
  [[nodiscard]] bool isSubsetOfSet(const NSSet& other) const;
  [[nodiscard]] bool intersectsSet(const NSSet& other) const;
  [[nodiscard]] Ref<NSSet> setByAddingObject(const Value& object) const;
  [[nodiscard]] Ref<NSSet> setByAddingObjectsFromSet(const NSSet& other) const;
  [[nodiscard]] Ref<NSSet> setByAddingObjectsFromArray(const NSArray& array) const;

  /// An immutable set: this one, unless it is an NSMutableSet.
  [[nodiscard]] virtual Ref<NSSet> copy() const;
  [[nodiscard]] Ref<NSMutableSet> mutableCopy() const;

  /// Equal to any set with equal elements, in any order, mutable or not.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// One element per line, in "{(" and ")}"; texts are quoted unless they are one plain word.
  [[nodiscard]] NSString description() const override;

  /// An array of the elements' values for the key; equal values appear repeatedly.
  [[nodiscard]] Value valueForKey(const NSString& key) const override;
  [[nodiscard]] Value valueForKeyPath(const NSString& keyPath) const override;
  /// Sets the key of every element.
  void setValue_forKey(const Value& value, const NSString& key) override;

 protected:
  detail::OrderedTable<Value> table_;
  std::uint64_t changes_ = 0;  ///< number of changes of an NSMutableSet

 private:
  friend struct detail::CollectionAccess;
  [[nodiscard]] const_iterator iteratorAt(std::size_t position) const noexcept {
    const auto& entries = table_.entries();
    return {entries.data() + position, entries.data() + entries.size(), *this, changes_};
  }
};

}  // namespace norvik
