// NorvikCore/platform/kernel/Hidden.h - the part of a class that stands in its source file, owned by a pointer.
//
// What std::unique_ptr is, without <memory>, which makes including a header take twice as long.
#pragma once

namespace norvik::detail {

/// T is complete where the owner's constructor and destructor are defined.
template <class T>
class Hidden {
 public:
  constexpr Hidden() noexcept = default;
  /// Owns what `new` made.
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

}  // namespace norvik::detail
