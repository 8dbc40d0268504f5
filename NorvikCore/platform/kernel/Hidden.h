// NorvikCore/platform/kernel/Hidden.h - a pointer that owns the part of a class that its source file defines.
//
// Like std::unique_ptr, but without <memory>, which doubles the time to include a header.
#pragma once

namespace norvik::detail {

/// T must be complete where the owner's constructor and destructor are defined.
template <class T>
class Hidden {
 public:
  constexpr Hidden() noexcept = default;
  /// Takes ownership of an object that was made by `new`.
  explicit Hidden(T* made) noexcept : part_(made) {}
  Hidden(Hidden&& other) noexcept : part_(other.part_) { other.part_ = nullptr; }
  Hidden& operator=(Hidden&& other) noexcept {
    T* const before = part_;
    part_ = other.part_;
    other.part_ = nullptr;
    if (before != part_) delete before;
    return *this;
  }
  ~Hidden() {
    static_assert(sizeof(T) > 0);
    delete part_;
  }

  void reset() noexcept { *this = Hidden(); }

  [[nodiscard]] T* get() const noexcept { return part_; }
  T& operator*() const noexcept { return *part_; }
  T* operator->() const noexcept { return part_; }
  explicit operator bool() const noexcept { return part_ != nullptr; }

 private:
  T* part_ = nullptr;
};

/// The same for an array of elements, as the copy of a text.
template <class T>
class Hidden<T[]> {
 public:
  constexpr Hidden() noexcept = default;
  /// Takes ownership of an array that was made by `new[]`.
  explicit Hidden(T* made) noexcept : part_(made) {}
  Hidden(Hidden&& other) noexcept : part_(other.part_) { other.part_ = nullptr; }
  Hidden& operator=(Hidden&& other) noexcept {
    T* const before = part_;
    part_ = other.part_;
    other.part_ = nullptr;
    if (before != part_) delete[] before;
    return *this;
  }
  ~Hidden() { delete[] part_; }

  [[nodiscard]] T* get() const noexcept { return part_; }
  explicit operator bool() const noexcept { return part_ != nullptr; }

 private:
  T* part_ = nullptr;
};

}  // namespace norvik::detail
