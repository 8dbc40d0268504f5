// NorvikCore/platform/values/internal/FormatBuffer.h - the buffer of a formatted text: on the stack while it is short.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace norvik::detail {

class FormatBuffer {
 public:
  FormatBuffer() noexcept = default;
  FormatBuffer(const FormatBuffer&) = delete;
  FormatBuffer& operator=(const FormatBuffer&) = delete;

  void append(std::string_view text) {
    if (!text.empty()) std::memcpy(extend(text.size()), text.data(), text.size());
  }
  /// Appends a text unchanged, including lone surrogate halves; two halves that become adjacent form one character.
  void append(const NSString& text) {
    if (text.isWellFormed()) return append(text.view());
    before_ = string() + text;
    size_ = 0;
  }
  void append(std::size_t count, char c) { std::memset(extend(count), c, count); }

  /// Makes room for `count` more bytes, which the caller writes.
  char* extend(std::size_t count) {
    if (capacity_ - size_ < count) [[unlikely]]
      grow(count);
    char* end = data_ + size_;
    size_ += count;
    return end;
  }

  /// The whole text so far; also empty if it contains lone halves.
  [[nodiscard]] std::string_view view() const noexcept {
    return before_.empty() ? std::string_view(data_, size_) : std::string_view();
  }
  [[nodiscard]] NSString string() const {
    const std::string_view text(data_, size_);
    return before_.empty() ? NSString(text) : before_ + NSString(text);
  }

 private:
  void grow(std::size_t count) {
    const std::size_t capacity = std::max(capacity_ * 2, size_ + count);
    auto larger = std::make_unique_for_overwrite<char[]>(capacity);
    std::memcpy(larger.get(), data_, size_);
    heap_ = std::move(larger);
    data_ = heap_.get();
    capacity_ = capacity;
  }

  NSString before_;  // the text up to and including the last one with a lone half
  char stack_[496];
  char* data_ = stack_;
  std::size_t size_ = 0, capacity_ = sizeof stack_;
  std::unique_ptr<char[]> heap_;
};

}  // namespace norvik::detail
