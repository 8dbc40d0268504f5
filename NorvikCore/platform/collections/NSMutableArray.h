// NorvikCore/platform/collections/NSMutableArray.h - a sequence of values that can be changed in place.
//
//   auto names = NSMutableArray::arrayWithObjects("Zoe", "Ann");
//   names->addObject("Bob");
//   names->sort();                                   // Ann, Bob, Zoe
//   names->removeObject("Bob");
//
// NSArray.h describes what raises. A change while a range-based for iterates over the array makes that loop raise
// NSGenericException. Every modification counts as a change, even one that stores the same element again; an operation
// without effect does not. An operation that raises leaves the array unchanged. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik {

class NK_EXPORT NSMutableArray : public NSArray {
  NK_OBJECT(NSMutableArray, NSArray)

  NSMutableArray() noexcept = default;
  explicit NSMutableArray(std::vector<Value> elements) : NSArray(std::move(elements)) {}
  ~NSMutableArray() override;

  [[nodiscard]] static Ref<NSMutableArray> array() { return make<NSMutableArray>(); }
  /// Empty, with room for that many elements.
  [[nodiscard]] static Ref<NSMutableArray> arrayWithCapacity(std::size_t capacity);
  [[nodiscard]] static Ref<NSMutableArray> arrayWith(std::initializer_list<Value> objects) {
    return make<NSMutableArray>(std::vector<Value>(objects));
  }
  template <class... V>
  [[nodiscard]] static Ref<NSMutableArray> arrayWithObjects(V&&... objects) {
    return arrayWith({detail::elementOf(std::forward<V>(objects))...});
  }
  [[nodiscard]] static Ref<NSMutableArray> arrayWithArray(const NSArray& other) { return other.mutableCopy(); }
  template <class Range>
  [[nodiscard]] static Ref<NSMutableArray> arrayFrom(const Range& objects) {
    return make<NSMutableArray>(detail::elementsOf(objects));
  }

  void addObject(Value object);
  void addObjectsFromArray(const NSArray& other);
  /// At an index up to and including count().
  void insertObject(Value object, std::size_t index);
  void replaceObjectAtIndex(std::size_t index, Value object);
  void exchangeObjectAtIndex(std::size_t index, std::size_t other);
  void setArray(const NSArray& other);

  /// Removing the first element takes constant time on average, any other the time to move the elements behind it.
  void removeObjectAtIndex(std::size_t index);
  /// No effect if the array is empty.
  void removeLastObject();
  void removeAllObjects();
  void removeObjectsInRange(NSRange range);
  /// Removes every element equal to `object`.
  void removeObject(const Value& object);
  void removeObjectIdenticalTo(const Value& object);
  /// Removes every element that is equal to an element of `other`.
  void removeObjectsInArray(const NSArray& other);
  /// Removes every element for which `test(element)` is true; returns their number. During the test the array is
  /// unchanged.
  template <class Test>
  std::size_t removeObjectsPassingTest(Test&& test) {
    std::vector<Value> kept;
    kept.reserve(count());
    for (const Value& element : *this) {
      if (!test(element)) kept.push_back(element);
    }
    const std::size_t removed = count() - kept.size();
    if (removed > 0) replaceAll(std::move(kept));
    return removed;
  }

  /// In the order of Value::compare.
  void sort();
  /// `compare(a, b)` returns an NSComparisonResult. Elements that compare as the same keep their order.
  template <class Compare>
  void sortUsingComparator(Compare&& compare) {
    replaceAll(detail::sorted(elements(), compare));
  }

  /// An NSArray of the current elements.
  [[nodiscard]] Ref<NSArray> copy() const override;

 private:
  void replaceAll(std::vector<Value> elements) noexcept;
};

}  // namespace norvik
