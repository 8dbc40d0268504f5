// NorvikCore/platform/collections/NSMutableSet.h - distinct values, which can be changed in place.
//
//   auto seen = NSMutableSet::set();
//   seen->addObject("BR");
//   seen->addObject("BR");                            // is there already: no change
//   seen->minusSet(*NSSet::setWithObjects("BR"));
//
// What raises is told in NSSet.h. A change while a range-based for runs over the set makes that loop raise
// NSGenericException; adding what is there or removing what is not is no change. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSSet.h"

namespace norvik {

class NK_EXPORT NSMutableSet : public NSSet {
  NK_OBJECT(NSMutableSet, NSSet)

  NSMutableSet() noexcept = default;
  explicit NSMutableSet(std::vector<Value> elements) : NSSet(std::move(elements)) {}
  ~NSMutableSet() override;

  [[nodiscard]] static Ref<NSMutableSet> set() { return make<NSMutableSet>(); }
  /// Empty, with room for so many.
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

  /// An NSSet of the present elements.
  [[nodiscard]] Ref<NSSet> copy() const override;
};

}  // namespace norvik
