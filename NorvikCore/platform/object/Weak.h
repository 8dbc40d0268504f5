// NorvikCore/platform/object/Weak.h - a reference that does not retain its object, and is empty once the object is
// destroyed.
//
//   Weak<Payslip> watched = slip;
//   if (Ref<Payslip> alive = watched.lock()) alive->recalculate();
//
// An object gets a side record with its first Weak, observer or associated value; a Weak retains that record. Objects
// without one cost nothing extra. Reading is safe on any thread, also while another thread destroys the object; one
// Weak itself is a value like any other.
#pragma once

#include "NorvikCore/platform/object/Ref.h"

#include <compare>
#include <cstdint>

namespace norvik {
namespace detail {

class SideRecord;
NK_EXPORT SideRecord* weakRecord(
    const NSObject* object) noexcept;  ///< the object's record, with one count for the caller
NK_EXPORT void retain(SideRecord* record) noexcept;
NK_EXPORT void release(SideRecord* record) noexcept;
NK_EXPORT NSObject* lock(SideRecord* record) noexcept;  ///< the object with one count for the caller, or null
NK_EXPORT bool isGone(SideRecord* record) noexcept;     ///< the object is destroyed or is being destroyed

}  // namespace detail

template <class T>
class Weak {
 public:
  constexpr Weak() noexcept = default;
  constexpr Weak(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): nullptr is the empty reference
  template <class U>
  requires std::is_convertible_v<U*, T*> Weak(const Ref<U>& object)
  noexcept : Weak(object.get()) {}
  explicit Weak(T* object) noexcept : object_(object), record_(object ? detail::weakRecord(object) : nullptr) {}
  Weak(const Weak& other) noexcept : object_(other.object_), record_(other.record_) {
    if (record_) detail::retain(record_);
  }
  Weak(Weak&& other) noexcept : object_(other.object_), record_(other.record_) {
    other.object_ = nullptr;
    other.record_ = nullptr;
  }
  ~Weak() {
    if (record_) detail::release(record_);
  }
  Weak& operator=(Weak other) noexcept {
    object_ = other.object_;
    detail::SideRecord* const before = record_;
    record_ = other.record_;
    other.record_ = before;
    return *this;
  }

  /// The object, retained while the result lives; empty if the object is destroyed or is being destroyed.
  [[nodiscard]] Ref<T> lock() const noexcept {
    return record_ && detail::lock(record_) ? Ref<T>::adopt(object_) : Ref<T>();
  }

  /// True if it refers to no object, or to one that is destroyed or is being destroyed.
  [[nodiscard]] bool isGone() const noexcept { return !record_ || detail::isGone(record_); }

  /// Its side record, with one count for the caller; null for a Weak that is empty from the start.
  [[nodiscard]] detail::SideRecord* retainedRecord() const noexcept {
    if (record_) detail::retain(record_);
    return record_;
  }

  /// True if both refer to the same object, alive or destroyed, or both to none.
  friend bool operator==(const Weak& a, const Weak& b) noexcept { return a.record_ == b.record_; }
  /// An order for keys, which stays the same when the object is destroyed, and differs from one run to the next.
  friend std::strong_ordering operator<=>(const Weak& a, const Weak& b) noexcept {
    return reinterpret_cast<std::uintptr_t>(a.record_) <=> reinterpret_cast<std::uintptr_t>(b.record_);
  }

 private:
  friend struct std::hash<Weak>;

  T* object_ = nullptr;
  detail::SideRecord* record_ = nullptr;
};

}  // namespace norvik

template <class T>
struct std::hash<norvik::Weak<T>> {
  std::size_t operator()(const norvik::Weak<T>& weak) const noexcept { return std::hash<const void*>()(weak.record_); }
};
