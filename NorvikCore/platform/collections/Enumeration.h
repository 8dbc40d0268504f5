// NorvikCore/platform/collections/Enumeration.h - range-based for over a collection, which detects changes of the
// collection during the loop. Users need not read it.
#pragma once

#include "NorvikCore/platform/collections/OrderedTable.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>  // iterator categories and std::begin, by the cheapest header
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

/// Iterates over contiguous `Element`s; a step raises if the collection's count of changes has changed. Random access
/// if no element can be removed in between.
template <class Element, bool skipsRemoved>
class CheckedIterator {
 public:
  using iterator_category =
      std::conditional_t<skipsRemoved, std::forward_iterator_tag, std::random_access_iterator_tag>;
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
    checkUnchanged();
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

  CheckedIterator& operator--() requires(!skipsRemoved) { return *this -= 1; }
  CheckedIterator operator--(int) requires(!skipsRemoved) {
    CheckedIterator before = *this;
    --*this;
    return before;
  }
  CheckedIterator& operator+=(difference_type count) requires(!skipsRemoved) {
    checkUnchanged();
    at_ += count;
    return *this;
  }
  CheckedIterator& operator-=(difference_type count) requires(!skipsRemoved) { return *this += -count; }
  reference operator[](difference_type count) const requires(!skipsRemoved) { return *(*this + count); }
  friend CheckedIterator operator+(CheckedIterator at, difference_type count) requires(!skipsRemoved) {
    return at += count;
  }
  friend CheckedIterator operator+(difference_type count, CheckedIterator at) requires(!skipsRemoved) {
    return at += count;
  }
  friend CheckedIterator operator-(CheckedIterator at, difference_type count) requires(!skipsRemoved) {
    return at -= count;
  }
  friend difference_type operator-(const CheckedIterator& a, const CheckedIterator& b) noexcept
      requires(!skipsRemoved) {
    return a.at_ - b.at_;
  }
  friend std::strong_ordering operator<=>(const CheckedIterator& a, const CheckedIterator& b) noexcept
      requires(!skipsRemoved) {
    return a.at_ <=> b.at_;
  }

 private:
  void checkUnchanged() const {
    if (*changes_ != expected_) [[unlikely]]
      raiseMutated(*collection_);
  }
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

/// An element of an array or a set as a T, and an entry of a dictionary as a pair of its key and its value.
template <class T>
struct ReadElement {
  using reference = decltype(elementAs<T>(std::declval<const Value&>()));
  static reference read(const Value& element) { return elementAs<T>(element); }
};
template <class Key, class T>
struct ReadEntry {
  using reference = std::pair<decltype(elementAs<Key>(std::declval<const Value&>())),
                              decltype(elementAs<T>(std::declval<const Value&>()))>;
  template <class Entry>
  static reference read(const Entry& entry) {
    return reference(elementAs<Key>(entry.key), elementAs<T>(entry.value));
  }
};

/// The elements of a collection as Read gives them: a view, for range-based for, <algorithm> and <ranges>. Retains the
/// collection; an iterator does not.
template <class Read, class Collection>
class ElementsAs {
  using Base = typename Collection::const_iterator;
  static constexpr bool isRandom = std::random_access_iterator<Base>;

 public:
  class iterator {
   public:
    using reference = typename Read::reference;
    using value_type = std::remove_cvref_t<reference>;
    using difference_type = std::ptrdiff_t;
    using pointer = std::add_pointer_t<reference>;
    using iterator_concept = std::conditional_t<isRandom, std::random_access_iterator_tag, std::forward_iterator_tag>;
    // The algorithms before C++20 expect that a forward iterator gives a reference.
    using iterator_category =
        std::conditional_t<std::is_reference_v<reference>, iterator_concept, std::input_iterator_tag>;

    iterator() noexcept = default;
    explicit iterator(Base at) noexcept : at_(at) {}
    reference operator*() const { return Read::read(*at_); }
    pointer operator->() const requires std::is_reference_v<reference> { return &**this; }
    iterator& operator++() {
      ++at_;
      return *this;
    }
    iterator operator++(int) {
      iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const iterator& a, const iterator& b) noexcept { return a.at_ == b.at_; }

    iterator& operator--() requires isRandom {
      --at_;
      return *this;
    }
    iterator operator--(int) requires isRandom {
      iterator before = *this;
      --*this;
      return before;
    }
    iterator& operator+=(difference_type count) requires isRandom {
      at_ += count;
      return *this;
    }
    iterator& operator-=(difference_type count) requires isRandom {
      at_ -= count;
      return *this;
    }
    reference operator[](difference_type count) const requires isRandom { return *(*this + count); }
    friend iterator operator+(iterator at, difference_type count) requires isRandom { return at += count; }
    friend iterator operator+(difference_type count, iterator at) requires isRandom { return at += count; }
    friend iterator operator-(iterator at, difference_type count) requires isRandom { return at -= count; }
    friend difference_type operator-(const iterator& a, const iterator& b) noexcept requires isRandom {
      return a.at_ - b.at_;
    }
    friend std::strong_ordering operator<=>(const iterator& a, const iterator& b) noexcept requires isRandom {
      return a.at_ <=> b.at_;
    }

   private:
    Base at_;
  };

  explicit ElementsAs(const Collection& collection) noexcept : collection_(&collection) {}

  [[nodiscard]] iterator begin() const noexcept { return iterator(collection_->begin()); }
  [[nodiscard]] iterator end() const noexcept { return iterator(collection_->end()); }
  [[nodiscard]] std::size_t size() const noexcept { return collection_->count(); }
  [[nodiscard]] bool empty() const noexcept { return size() == 0; }
  /// Raises NSRangeException beyond the end.
  [[nodiscard]] typename Read::reference operator[](std::size_t index) const requires isRandom {
    return Read::read(collection_->objectAtIndex(index));
  }

 private:
  Ref<const Collection> collection_;
};

}  // namespace norvik::detail

// A copy retains the collection, in constant time; <string_view> declares the template.
template <class Read, class Collection>
inline constexpr bool std::ranges::enable_view<norvik::detail::ElementsAs<Read, Collection>> = true;
