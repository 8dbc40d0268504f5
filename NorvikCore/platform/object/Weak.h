// NorvikCore/platform/object/Weak.h - a reference that does not keep its object and reads empty once the object is
// gone.
//
//   Weak<Payslip> watched = slip;
//   if (Ref<Payslip> alive = watched.lock()) alive->recalculate();
//
// The first Weak to an object makes an entry in a side table; objects without one pay nothing. Reading is safe on any
// thread, also while the object goes on another; one Weak itself is a value like any other.
#pragma once

#include "NorvikCore/platform/object/Ref.h"

namespace norvik {
namespace detail {

class WeakCell;
NK_EXPORT WeakCell* weakCell(const NSObject* object) noexcept;  ///< the object's cell, with one count for the caller
NK_EXPORT void retain(WeakCell* cell) noexcept;
NK_EXPORT void release(WeakCell* cell) noexcept;
NK_EXPORT NSObject* lock(WeakCell* cell) noexcept;  ///< the object with one count for the caller, or null
NK_EXPORT bool isGone(WeakCell* cell) noexcept;     ///< the object is gone or going

}  // namespace detail

template <class T>
class Weak {
 public:
  constexpr Weak() noexcept = default;
  constexpr Weak(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): nullptr is the empty reference
  template <class U>
  requires std::is_convertible_v<U*, T*> Weak(const Ref<U>& object)
  noexcept : Weak(object.get()) {}
  explicit Weak(T* object) noexcept : object_(object), cell_(object ? detail::weakCell(object) : nullptr) {}
  Weak(const Weak& other) noexcept : object_(other.object_), cell_(other.cell_) {
    if (cell_) detail::retain(cell_);
  }
  Weak(Weak&& other) noexcept
      : object_(std::exchange(other.object_, nullptr)), cell_(std::exchange(other.cell_, nullptr)) {}
  ~Weak() {
    if (cell_) detail::release(cell_);
  }
  Weak& operator=(Weak other) noexcept {
    std::swap(object_, other.object_);
    std::swap(cell_, other.cell_);
    return *this;
  }

  /// The object, kept while the result lives, or empty once the object is gone or going.
  [[nodiscard]] Ref<T> lock() const noexcept {
    return cell_ && detail::lock(cell_) ? Ref<T>::adopt(object_) : Ref<T>();
  }

  /// Refers to no object, or to one that is gone or going.
  [[nodiscard]] bool isGone() const noexcept { return !cell_ || detail::isGone(cell_); }

  /// Both refer to the same object, alive or gone, or both to none.
  friend bool operator==(const Weak& a, const Weak& b) noexcept { return a.cell_ == b.cell_; }

 private:
  T* object_ = nullptr;
  detail::WeakCell* cell_ = nullptr;
};

}  // namespace norvik
