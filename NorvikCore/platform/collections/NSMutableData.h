// NorvikCore/platform/collections/NSMutableData.h - bytes that can be changed in place.
//
//   auto line = NSMutableData::data();
//   line->appendText("1257L,");
//   line->appendBytes(&code, sizeof code);
//   line->setLength(6);
//
// A range beyond the end raises NSRangeException. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"

namespace norvik {

class NK_EXPORT NSMutableData : public NSData {
  NK_OBJECT(NSMutableData, NSData)

  NSMutableData() noexcept = default;
  explicit NSMutableData(std::vector<std::uint8_t> bytes) noexcept : NSData(std::move(bytes)) {}
  ~NSMutableData() override;

  [[nodiscard]] static Ref<NSMutableData> data() { return make<NSMutableData>(); }
  /// Empty, with room for that many bytes.
  [[nodiscard]] static Ref<NSMutableData> dataWithCapacity(std::size_t capacity);
  /// That many zero bytes.
  [[nodiscard]] static Ref<NSMutableData> dataWithLength(std::size_t length);

  [[nodiscard]] std::span<std::uint8_t> mutableBytes() noexcept { return bytes_; }
  /// New bytes at the end are zero.
  void setLength(std::size_t length) { bytes_.resize(length); }
  void appendBytes(const void* bytes, std::size_t length);
  void appendText(std::string_view text) { appendBytes(text.data(), text.size()); }
  void appendData(const NSData& other) { appendBytes(other.bytes().data(), other.length()); }
  /// Replaces the range by the bytes, of which there may be more or fewer.
  void replaceBytesInRange(NSRange range, std::span<const std::uint8_t> bytes);

  /// An NSData of the current bytes.
  [[nodiscard]] Ref<NSData> copy() const override;
};

}  // namespace norvik
