// NorvikCore/platform/values/NSMutableString.h - text that can be appended to, cut and replaced in place.
//
//   NSMutableString line;
//   line.appendString("Net pay ");
//   line.appendString("1,234.50");
//   line.insertString("GBP ", 8);
//   line.string();                                   // "Net pay GBP 1,234.50"
//
// Positions are UTF-16 units. Two surrogate halves that become adjacent form one character. Appending takes time in
// proportion to the appended text, every other change in proportion to the whole text. A value: copies are independent.
// A range beyond the text raises NSRangeException.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <string>

namespace norvik {

class NK_EXPORT NSMutableString {
 public:
  NSMutableString() noexcept = default;
  explicit NSMutableString(const NSString& text) : bytes_(text.view()) {}

  [[nodiscard]] NSUInteger length() const noexcept { return utf8::unitCount(bytes_); }
  [[nodiscard]] bool empty() const noexcept { return bytes_.empty(); }
  [[nodiscard]] char16_t characterAtIndex(NSUInteger index) const { return string().characterAtIndex(index); }
  /// The current text; later changes do not affect it.
  [[nodiscard]] NSString string() const { return NSString::copying(bytes_); }
  /// The current bytes, as in NSString::view(); valid until the next change.
  [[nodiscard]] std::string_view view() const noexcept { return bytes_; }

  void appendString(const NSString& text);
  /// The same for plain text, without creating an NSString.
  template <detail::PlainText Text>
  void appendString(const Text& text) {
    appendBytes(text);
  }
  void appendCodePoint(char32_t point) { appendString(NSString::fromCodePoint(point)); }
  void insertString(const NSString& text, NSUInteger index) { replaceCharactersInRange({index, 0}, text); }
  void deleteCharactersInRange(NSRange range) { replaceCharactersInRange(range, NSString()); }
  void replaceCharactersInRange(NSRange range, const NSString& text);
  void setString(const NSString& text) { bytes_ = text.view(); }
  void reserve(std::size_t bytes) { bytes_.reserve(bytes); }

  friend bool operator==(const NSMutableString& a, const NSMutableString& b) noexcept { return a.bytes_ == b.bytes_; }

 private:
  void appendBytes(std::string_view text);

  std::string bytes_;
};

}  // namespace norvik
