// NorvikCore/platform/dispatch/Handle.h - counted handles: the base of dispatch_queue_t and the similar types.
//
// Copies of a handle share one object; the object is released with the last handle. Handles are equal when they refer
// to the same object. An empty handle is nil. Value.
#pragma once

#include <cstddef>
#include <string_view>  // std::hash, by the cheapest header
#include <utility>

namespace norvik::detail {

/// `Core` is a class of the library. The functions retainCore(Core*) and releaseCore(Core*) retain and release it.
template <class Core>
class Handle {
 public:
  constexpr Handle() noexcept = default;
  constexpr Handle(std::nullptr_t) noexcept {}
  Handle(const Handle& other) noexcept : core_(other.core_) {
    if (core_ != nullptr) retainCore(core_);
  }
  constexpr Handle(Handle&& other) noexcept : core_(std::exchange(other.core_, nullptr)) {}
  ~Handle() {
    if (core_ != nullptr) releaseCore(core_);
  }
  Handle& operator=(Handle other) noexcept {
    std::swap(core_, other.core_);
    return *this;
  }

  /// A handle that takes over one reference that the caller holds.
  static Handle adopt(Core* core) noexcept {
    Handle handle;
    handle.core_ = core;
    return handle;
  }
  /// A handle that adds a reference of its own.
  static Handle share(Core* core) noexcept {
    if (core != nullptr) retainCore(core);
    return adopt(core);
  }

  [[nodiscard]] Core* core() const noexcept { return core_; }
  [[nodiscard]] explicit operator bool() const noexcept { return core_ != nullptr; }
  [[nodiscard]] friend bool operator==(const Handle& a, const Handle& b) noexcept { return a.core_ == b.core_; }
  [[nodiscard]] friend bool operator==(const Handle& a, std::nullptr_t) noexcept { return a.core_ == nullptr; }

 private:
  Core* core_ = nullptr;
};

}  // namespace norvik::detail

template <class Core>
struct std::hash<norvik::detail::Handle<Core>> {
  std::size_t operator()(const norvik::detail::Handle<Core>& handle) const noexcept {
    return std::hash<const void*>{}(handle.core());
  }
};
