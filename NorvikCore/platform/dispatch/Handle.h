// NorvikCore/platform/dispatch/Handle.h - what dispatch_queue_t and its kin are: counted handles, empty or not.
//
// Copying a handle shares what it stands for; the last handle lets it go. Handles are equal when they stand for the
// same thing. An empty handle is nil. Value.
#pragma once

#include <cstddef>
#include <string_view>  // std::hash, at the least cost
#include <utility>

namespace norvik::detail {

/// `Core` is a class of the library's own with `void retain() noexcept` and `void release() noexcept`, found through
/// retainCore(Core*) and releaseCore(Core*).
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
