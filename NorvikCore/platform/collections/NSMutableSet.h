// NorvikCore/platform/collections/NSMutableSet.h - distinct values, which can be changed in place.
//
//   auto seen = NSMutableSet::set();
//   seen->addObject("BR");
//   seen->addObject("BR");                            // it is in the set already: no change
//   seen->minusSet(*NSSet::setWithObjects("BR"));
//
// NSSet.h describes what raises. A change while a range-based for iterates over the set makes that loop raise
// NSGenericException; adding an existing element or removing a missing one is not a change. Confined: one thread at a
// time.
#pragma once

#include "NorvikCore/platform/collections/NSSet.h"

namespace norvik {

class NK_EXPORT NSMutableSet : public NSSet {
  NK_OBJECT(NSMutableSet, NSSet)

  NSMutableSet() noexcept = default;
  explicit NSMutableSet(std::vector<Value> elements) : NSSet(std::move(elements)) {}
  ~NSMutableSet() override;

  [[nodiscard]] static Ref<NSMutableSet> set() { return make<NSMutableSet>(); }
  /// Empty, with room for that many elements.
  [[nodiscard]] static Ref<NSMutableSet> setWithCapacity(std::size_t capacity);
  [[nodiscard]] static Ref<NSMutableSet> setWith(std::initializer_list<Value> objects) {
    return make<NSMutableSet>(std::vector<Value>(objects));
  }
  template <class... V>
  [[nodiscard]] static Ref<NSMutableSet> setWithObjects(V&&... objects) {
    return setWith({detail::elementOf(std::forward<V>(objects))...});
  }
  [[nodiscard]] static Ref<NSMutableSet> setWithArray(const NSArray& array);
  [[nodiscard]] static Ref<NSMutableSet> setWithSet(const NSSet& other) { return other.mutableCopy(); }

  void addObject(Value object);
  void addObjectsFromArray(const NSArray& array);
  void removeObject(const Value& object);
  void removeAllObjects();
  void unionSet(const NSSet& other);
  void minusSet(const NSSet& other);
  void intersectSet(const NSSet& other);
  void setSet(const NSSet& other);

  /// An NSSet of the current elements.
  [[nodiscard]] Ref<NSSet> copy() const override;
};

}  // namespace norvik
