// NorvikCore/platform/collections/NSData.h - immutable bytes.
//
//   Ref<NSData> data = NSData::dataWithBytes("pay\n", 4);
//   data->length();                                   // 4
//   data->subdataWithRange({0, 3})->text();           // "pay"
//
// A range beyond the end raises NSRangeException. Threads: any number may read; an NSMutableData is confined to one at
// a time.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <span>
#include <string_view>
#include <vector>

namespace norvik {

class NSMutableData;

class NK_EXPORT NSData : public NSObject {
  NK_OBJECT(NSData, NSObject)

  NSData() noexcept = default;
  explicit NSData(std::vector<std::uint8_t> bytes) noexcept : bytes_(std::move(bytes)) {}
  ~NSData() override;

  [[nodiscard]] static Ref<NSData> data() { return make<NSData>(); }
  [[nodiscard]] static Ref<NSData> dataWithBytes(const void* bytes, std::size_t length);
  [[nodiscard]] static Ref<NSData> dataWithBytes(std::span<const std::uint8_t> bytes);
  /// The bytes of a text; for an NSString its view() or its bytes().
  [[nodiscard]] static Ref<NSData> dataWithText(std::string_view text) {
    return dataWithBytes(text.data(), text.size());
  }

  [[nodiscard]] std::size_t length() const noexcept { return bytes_.size(); }
  /// Valid until the data change or are destroyed.
  [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept { return bytes_; }
  [[nodiscard]] std::string_view text() const noexcept {
    return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
  }
  [[nodiscard]] Ref<NSData> subdataWithRange(NSRange range) const;
  [[nodiscard]] bool isEqualToData(const NSData& other) const { return isEqual(other); }

  /// Immutable data: these, unless they are an NSMutableData.
  [[nodiscard]] virtual Ref<NSData> copy() const;
  [[nodiscard]] Ref<NSMutableData> mutableCopy() const;

  /// Equal to any data with the same bytes, mutable or not.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// "<7061790a>": hexadecimal digits, in groups of four bytes. For more than 64 bytes: the first 64 and the total
  /// number.
  [[nodiscard]] NSString description() const override;

 protected:
  void checkRange(const char* operation, NSRange range) const;

  std::vector<std::uint8_t> bytes_;
};

}  // namespace norvik
