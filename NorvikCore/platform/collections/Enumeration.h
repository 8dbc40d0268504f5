// NorvikCore/platform/collections/Enumeration.h - range-based for over a collection, which detects changes of the
// collection during the loop. Users need not read it.
#pragma once  // include time: <iterator>, for the algorithms of the standard library

#include "NorvikCore/platform/collections/OrderedTable.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace norvik::detail {

struct CollectionAccess;

/// Raises NSGenericException with the collection's class and description.
[[noreturn]] NK_EXPORT void raiseMutated(const NSObject& collection);
/// Raises NSInvalidArgumentException: the element is not of the class `wanted`.
[[noreturn]] NK_EXPORT void raiseElement(const Value& element, const Class& wanted);
template <class T>
consteval bool canBeElement() {
  constexpr bool becomesValue = std::is_constructible_v<Value, T>;
  static_assert(becomesValue,
                "a collection holds Values, and this type does not convert to Value: pass an object by its Ref");
  return becomesValue;
}
template <class T>
Value elementOf(T&& content) {
  if constexpr (canBeElement<T>()) return Value(std::forward<T>(content));
  __builtin_unreachable();
}
template <class Range>
std::vector<Value> elementsOf(const Range& contents) {
  if constexpr (canBeElement<decltype(*std::begin(contents))>())
    return std::vector<Value>(std::begin(contents), std::end(contents));
  __builtin_unreachable();
}

/// Raises NSInvalidArgumentException if `object` is absent; `operation` names the operation that received it.
NK_EXPORT void checkPresent(const Value& object, const char* operation);

/// Iterates over contiguous `Element`s; raises if the collection's count of changes has changed.
template <class Element, bool skipsRemoved>
class CheckedIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = Element;
  using difference_type = std::ptrdiff_t;
  using pointer = const Element*;
  using reference = const Element&;

  CheckedIterator() noexcept = default;
  CheckedIterator(const Element* at, const Element* end, const NSObject& collection,
                  const std::uint64_t& changes) noexcept
      : at_(at), end_(end), collection_(&collection), changes_(&changes), expected_(changes) {
    skipRemoved();
  }

  reference operator*() const noexcept { return *at_; }
  pointer operator->() const noexcept { return at_; }
  CheckedIterator& operator++() {
    if (*changes_ != expected_) [[unlikely]]
      raiseMutated(*collection_);
    ++at_;
    skipRemoved();
    return *this;
  }
  CheckedIterator operator++(int) {
    CheckedIterator before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const CheckedIterator& a, const CheckedIterator& b) noexcept { return a.at_ == b.at_; }

 private:
  void skipRemoved() noexcept {
    if constexpr (skipsRemoved) {
      while (at_ != end_ && keyOf(*at_).isAbsent()) ++at_;
    }
  }

  const Element* at_ = nullptr;
  const Element* end_ = nullptr;
  const NSObject* collection_ = nullptr;
  const std::uint64_t* changes_ = nullptr;
  std::uint64_t expected_ = 0;
};

/// The element as a T: a reference if T is a class of objects, which may be a superclass; otherwise a T by value.
template <class T>
decltype(auto) elementAs(const Value& element) {
  if constexpr (std::is_base_of_v<NSObject, T>) {
    NSObject* object = element.object();
    if (object && typeid(*object) == typeid(T)) [[likely]]
      return static_cast<T&>(*object);
    T* other = dynamic_cast<T*>(object);
    if (!other) raiseElement(element, T::staticClass());
    return *other;
  } else {
    return element.template as<T>();
  }
}

/// The elements of a collection as T, for a range-based for. Retains the collection.
template <class T, class Collection>
class ElementsAs {
 public:
  explicit ElementsAs(const Collection& collection) noexcept : collection_(&collection) {}

  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using reference = decltype(elementAs<T>(std::declval<const Value&>()));
    using value_type = std::remove_cvref_t<reference>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;

    explicit iterator(typename Collection::const_iterator at) noexcept : at_(at) {}
    reference operator*() const { return elementAs<T>(*at_); }
    iterator& operator++() {
      ++at_;
      return *this;
    }
    void operator++(int) { ++at_; }
    friend bool operator==(const iterator& a, const iterator& b) noexcept { return a.at_ == b.at_; }

   private:
    typename Collection::const_iterator at_;
  };

  [[nodiscard]] iterator begin() const noexcept { return iterator(collection_->begin()); }
  [[nodiscard]] iterator end() const noexcept { return iterator(collection_->end()); }

 private:
  Ref<const Collection> collection_;
};

}  // namespace norvik::detail
