// NorvikCore/platform/collections/NSArray.h - an immutable sequence of values.
//
//   Ref<NSArray> pay = NSArray::arrayWithObjects(1200_dec, 950.50_dec, "unpaid");
//   pay->count();                                              // 3
//   for (const Value& each : *pay) NSLog("%@", each);
//   for (Payslip& slip : payslips->as<Payslip>()) slip.recalculate();   // raises if an element is not a Payslip
//   payslips->as<Payslip>() | std::views::filter(&Payslip::isPaid);     // as() is a view, also for <algorithm>
//   pay->sortedArrayUsingComparator([](const Value& a, const Value& b) { return a.compare(b); });
//
// Elements are any values except the absent one, which raises NSInvalidArgumentException; Value::null() represents it.
// An index or range beyond the end raises NSRangeException. The result of an operation is a new array.
//
// A range-based for is about as fast as over a std::vector<Value>. If the array is an NSMutableArray and is changed
// meanwhile, the loop raises NSGenericException at its next step; so does any other step of an iterator. A loop and
// iterators do not retain the array: hold it by a Ref (the view of `as` does that).
//
// References to elements stay valid until the array changes or is destroyed. Threads: any number may read; an
// NSMutableArray is confined to one at a time.
#pragma once

#include "NorvikCore/platform/collections/Enumeration.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <initializer_list>
#include <span>
#include <vector>

namespace norvik {

class NSMutableArray;

namespace detail {

using CompareCall = NSComparisonResult (*)(const void* compare, const Value& a, const Value& b);
NK_EXPORT std::vector<Value> sorted(std::span<const Value> elements, const void* compare, CompareCall call);

/// Sorts by a closure, which is only called and not stored; equal elements keep their order.
template <class Compare>
std::vector<Value> sorted(std::span<const Value> elements, Compare& compare) {
  const auto byReference = [&](const Value& a, const Value& b) -> NSComparisonResult { return compare(a, b); };
  return sorted(elements, &byReference, [](const void* call, const Value& a, const Value& b) {
    return (*static_cast<decltype(&byReference)>(call))(a, b);
  });
}

}  // namespace detail

class NK_EXPORT NSArray : public NSObject {
  NK_OBJECT(NSArray, NSObject)

  using const_iterator = detail::CheckedIterator<Value, false>;
  using iterator = const_iterator;
  using value_type = Value;

  NSArray() noexcept;
  explicit NSArray(std::vector<Value> elements);
  ~NSArray() override;

  [[nodiscard]] static Ref<NSArray> array();
  [[nodiscard]] static Ref<NSArray> arrayWith(std::initializer_list<Value> objects);
  template <class... V>
  [[nodiscard]] static Ref<NSArray> arrayWithObjects(V&&... objects) {
    return arrayWith({detail::elementOf(std::forward<V>(objects))...});
  }
  [[nodiscard]] static Ref<NSArray> arrayWithArray(const NSArray& other);
  /// From any range whose elements are values or convert to values, such as a std::vector<NSString>.
  template <class Range>
  [[nodiscard]] static Ref<NSArray> arrayFrom(const Range& objects) {
    return make<NSArray>(detail::elementsOf(objects));
  }

  [[nodiscard]] std::size_t count() const noexcept { return elements_.size() - first_; }
  [[nodiscard]] std::size_t size() const noexcept { return count(); }
  [[nodiscard]] bool empty() const noexcept { return count() == 0; }
  [[nodiscard]] const Value& objectAtIndex(std::size_t index) const {
    if (index >= count()) [[unlikely]]
      raiseIndex("objectAtIndex", index);
    return elements_[first_ + index];
  }
  [[nodiscard]] const Value& operator[](std::size_t index) const { return objectAtIndex(index); }
  /// Both are absent if the array is empty.
  [[nodiscard]] Value firstObject() const { return count() == 0 ? Value() : elements_[first_]; }
  [[nodiscard]] Value lastObject() const { return count() == 0 ? Value() : elements_[elements_.size() - 1]; }

  [[nodiscard]] const_iterator begin() const noexcept { return iteratorAt(0); }
  [[nodiscard]] const_iterator end() const noexcept { return iteratorAt(count()); }
  /// The elements without the check for changes.
  [[nodiscard]] std::span<const Value> elements() const noexcept;
  /// A view of the elements as `T&` if T is a class of objects, otherwise as `T` by value; with random access and
  /// size(). An element of another type raises NSInvalidArgumentException when it is reached. The view allocates
  /// nothing.
  template <class T>
  [[nodiscard]] detail::ElementsAs<detail::ReadElement<T>, NSArray> as() const noexcept {
    return detail::ElementsAs<detail::ReadElement<T>, NSArray>(*this);
  }

  [[nodiscard]] bool containsObject(const Value& object) const { return indexOfObject(object) != NSNotFound; }
  /// The index of the first element equal to `object`, or NSNotFound.
  [[nodiscard]] std::size_t indexOfObject(const Value& object) const;
  [[nodiscard]] std::size_t indexOfObjectIdenticalTo(const Value& object) const noexcept;
  [[nodiscard]] bool isEqualToArray(const NSArray& other) const { return isEqual(other); }

  [[nodiscard]] Ref<NSArray> subarrayWithRange(NSRange range) const;
  [[nodiscard]] Ref<NSArray> arrayByAddingObject(const Value& object) const;
  [[nodiscard]] Ref<NSArray> arrayByAddingObjectsFromArray(const NSArray& other) const;
  [[nodiscard]] Ref<NSArray> reversedArray() const;
  /// In the order of Value::compare.
  [[nodiscard]] Ref<NSArray> sortedArray() const;
  /// `compare(a, b)` returns an NSComparisonResult. Elements that compare as the same keep their order.
  template <class Compare>
  [[nodiscard]] Ref<NSArray> sortedArrayUsingComparator(Compare&& compare) const {
    return make<NSArray>(detail::sorted(elements(), compare));
  }
  /// The elements' descriptions with the separator between them.
  [[nodiscard]] NSString componentsJoinedByString(const NSString& separator) const;

  /// An immutable array: this one, unless it is an NSMutableArray.
  [[nodiscard]] virtual Ref<NSArray> copy() const;
  [[nodiscard]] Ref<NSMutableArray> mutableCopy() const;

  /// Equal to any array with equal elements in the same order, mutable or not.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// One element per line, in parentheses; texts are quoted unless they are one plain word.
  [[nodiscard]] NSString description() const override;

  /// An array of the elements' values for the key, with the null marker for an absent one.
  [[nodiscard]] Value valueForKey(const NSString& key) const override;
  [[nodiscard]] Value valueForKeyPath(const NSString& keyPath) const override;
  /// Sets the key of every element.
  void setValue_forKey(const Value& value, const NSString& key) override;

 protected:
  [[noreturn]] void raiseIndex(const char* operation, std::size_t index) const;
  void checkRange(const char* operation, NSRange range) const;

  /// Moves the elements to the beginning of elements_.
  void giveUpRoom() noexcept;
  [[nodiscard]] std::vector<Value> values() const;

  std::vector<Value> elements_;
  std::size_t first_ = 0;      ///< elements before it were removed from an NSMutableArray and are absent
  std::uint64_t changes_ = 0;  ///< number of changes of an NSMutableArray

 private:
  friend struct detail::CollectionAccess;
  [[nodiscard]] const_iterator iteratorAt(std::size_t index) const noexcept {
    return {elements_.data() + first_ + index, elements_.data() + elements_.size(), *this, changes_};
  }
};

}  // namespace norvik
