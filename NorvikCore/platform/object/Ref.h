// NorvikCore/platform/object/Ref.h - counted pointers to objects, and how objects are created.
//
//   Ref<Payslip> slip = make<Payslip>();
//   slip->setGrossPay(1234.50_dec);
//   Ref<NSObject> same = slip;          // shares the object, which is destroyed with its last Ref
//
// A Ref has the size of a pointer. Copying it changes the count; moving it does not. Counts change atomically, so Refs
// to one object may live on different threads; one Ref itself is a value like any other. An empty Ref is the absent
// object.
//
// Refs compare by identity, as pointers do, also as keys of std::map, std::set and their unordered forms. Whether two
// objects are equal is asked by a->isEqual(*b); Values, NSDictionary and NSSet compare objects that way.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cassert>
#include <compare>
#include <cstddef>
#include <optional>  // std::hash, by the cheapest header
#include <type_traits>
#include <utility>

// The library asks objects for their class, also objects of classes that a program declares.
#ifndef __cpp_rtti
#error The objects of NorvikCore need run-time type information: compile without -fno-rtti
#include <run-time type information>
#endif

namespace norvik {

class NSObject;
template <class T>
class Ref;

namespace detail {
// The compiler shows these names for `for (auto& slip : slips)` and `for (auto& slip : *slips())`.
struct ARefIsNotARange_LoopOverTheObjectItHolds {};
struct ATemporaryRefEndsBeforeTheLoop_KeepItInAVariable {};

NK_EXPORT void retain(const NSObject* object) noexcept;
NK_EXPORT void release(const NSObject* object) noexcept;
NK_EXPORT bool initialise(NSObject* object);

/// An object whose Ref is a temporary, as in `print(*slips())`. `for (auto& slip : *slips())` would iterate over an
/// array that is already destroyed, so it does not compile: store the Ref in a variable.
template <class T>
class Passing {
 public:
  operator T&() && noexcept { return object_; }  // NOLINT(google-explicit-constructor): it represents the object itself
  template <class Key>
  decltype(auto) operator[](const Key& key) && {
    return object_[key];
  }
  friend ATemporaryRefEndsBeforeTheLoop_KeepItInAVariable begin(const Passing&) = delete;
  friend ATemporaryRefEndsBeforeTheLoop_KeepItInAVariable end(const Passing&) = delete;

 private:
  friend class Ref<T>;
  explicit Passing(T& object) noexcept : object_(object) {}
  T& object_;
};
}  // namespace detail

template <class T>
class Ref {
 public:
  using element_type = T;

  constexpr Ref() noexcept = default;
  constexpr Ref(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): nullptr is the empty Ref
  explicit Ref(T* object) noexcept : object_(object) {
    if (object_) detail::retain(object_);
  }
  Ref(const Ref& other) noexcept : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(other.take()) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other)
  noexcept : Ref(other.get()) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
  noexcept : object_(other.take()) {}
  ~Ref() {
    if constexpr (requires { detail::release(object_); }) {
      if (object_) detail::release(object_);
    } else {
      static_assert(!sizeof(T*), "a Ref holds an object, of a complete class derived from NSObject; "
                                 "NSString, Decimal, Date, NSNumber and Value are values, without Ref");
    }
  }
  Ref& operator=(Ref other) noexcept {
    T* const before = object_;
    object_ = other.object_;
    other.object_ = before;
    return *this;
  }

  /// A Ref that takes over one count that the caller owns.
  [[nodiscard]] static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  /// Empties this Ref and passes its count to the caller.
  [[nodiscard]] T* take() noexcept {
    T* const object = object_;
    object_ = nullptr;
    return object;
  }

  [[nodiscard]] T* get() const noexcept { return object_; }
  // In a program compiled without NDEBUG, using an empty Ref ends the process with a message instead of a segmentation
  // fault.
  T& operator*() const& noexcept {
    assert(object_ && "an empty Ref is used as an object");
    return *object_;
  }
  /// For a temporary Ref, which is destroyed at the end of the statement: the result may be passed on, but not iterated
  /// over or stored.
  detail::Passing<T> operator*() const&& noexcept {
    assert(object_ && "an empty Ref is used as an object");
    return detail::Passing<T>(*object_);
  }
  T* operator->() const noexcept {
    assert(object_ && "an empty Ref is used as an object");
    return object_;
  }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Compares identity, not equality of the objects.
  template <class U>
  requires(std::is_convertible_v<U*, const volatile T*> || std::is_convertible_v<T*, const volatile U*>) friend bool
  operator==(const Ref& a, const Ref<U>& b) noexcept {
    return a.get() == b.get();
  }
  friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

  friend detail::ARefIsNotARange_LoopOverTheObjectItHolds begin(const Ref&) = delete;
  friend detail::ARefIsNotARange_LoopOverTheObjectItHolds end(const Ref&) = delete;

 private:
  T* object_ = nullptr;
};

/// The order of the addresses, for keys; it differs from one run to the next. An empty Ref is the first.
template <class T, class U>
requires(std::is_convertible_v<U*, const volatile T*> || std::is_convertible_v<T*, const volatile U*>)
    [[nodiscard]] std::strong_ordering
    operator<=>(const Ref<T>& a, const Ref<U>& b) noexcept {
  using Common = decltype(true ? a.get() : b.get());
  return std::compare_three_way()(static_cast<Common>(a.get()), static_cast<Common>(b.get()));
}

/// A Ref to an object that is alive, such as `*this` inside an operation.
template <class T>
[[nodiscard]] Ref<T> ref(T& object) noexcept {
  return Ref<T>(&object);
}

/// Creates an object: constructs it, then calls its `init` with virtual dispatch. Within `init`, Refs to the object may
/// already be taken. If `init` returns false, the result is an empty Ref.
template <class T, class... Args>
[[nodiscard]] Ref<T> make(Args&&... args) {
  if constexpr (requires(T * object) { detail::initialise(object); }) {
    auto object = Ref<T>::adopt(new T(std::forward<Args>(args)...));
    if (!detail::initialise(object.get())) return nullptr;
    return object;
  } else {
    static_assert(!sizeof(T*), "make() creates objects, of classes derived from NSObject; create a value by its "
                               "constructor, as in NSString(\"net\")");
  }
}

/// The object as a T, or an empty Ref if it is not a T.
template <class T, class U>
[[nodiscard]] Ref<T> refCast(const Ref<U>& object) noexcept {
  return Ref<T>(dynamic_cast<T*>(object.get()));
}

}  // namespace norvik

template <class T>
struct std::hash<norvik::Ref<T>> {
  std::size_t operator()(const norvik::Ref<T>& ref) const noexcept { return std::hash<T*>()(ref.get()); }
};
