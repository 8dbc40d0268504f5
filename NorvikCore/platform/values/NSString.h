// NorvikCore/platform/values/NSString.h - text: a small immutable value, indexed by UTF-16 code units, stored as UTF-8.
//
//   NSString name = "Zo\u00EB Smith";
//   name.length();                                   // 9 units, 10 bytes
//   name.substringFromIndex(4);                      // "Smith"
//   name.rangeOfString("smith", NSCaseInsensitiveSearch);   // {4, 5}
//   "Payslip of " + name;                            // "Payslip of Zoë Smith"
//   name += ", Leeds";                               // name.size() is 16: units again
//   std::string(name), std::string_view(name);       // both explicit: a copy, and a view of the stored bytes
//   for (char32_t each : name.codePoints()) ...      // or name.units(), the UTF-16 units
//
// A text is any sequence of UTF-16 units. A lone surrogate half is kept, and two halves that become adjacent form one
// character again. So if a text is cut anywhere and the pieces are joined, the result equals the text.
//
// Bytes that are not UTF-8 (for example in file names) are represented too: each such byte 0x80 to 0xFF becomes the
// lone half U+DC80 to U+DCFF. `bytes()` reverses that, so `fromBytes(x).bytes()` is `x` for any `x`.
//
// Copies share one counted storage. `"..."_ns` and a constant (`constexpr NSString x = "..."`) borrow their literal:
// they have no storage and nothing to release. A literal that is not UTF-8 does not compile; a constexpr text is never
// destroyed. In all other cases a literal is copied, as any `const char*` is.
//
// Comparison is literal, unit by unit, in the order of the units' numbers; a composed letter and its decomposed form
// differ. Indexing takes constant time on ASCII. On longer non-ASCII text the first use of an index builds a table in
// linear time; after that every index takes the time for some tens of bytes. Results that are texts copy their part.
// Every search takes linear time at most, also in repetitive text.
//
// Threads: a value; distinct objects may be used on distinct threads, even if they share storage.
// Errors: an index or range beyond the text raises NSRangeException.
#pragma once  // include time: <string>, <vector> and <optional> are in its operations

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/AtomicWord.h"
#include "NorvikCore/platform/values/NSComparisonResult.h"
#include "NorvikCore/platform/values/NSRange.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik {

class NSString;

/// How a search compares. Every search is literal.
enum NSStringCompareOptions : NSUInteger {
  NSCaseInsensitiveSearch = 1,  // Unicode's simple folding, letter by letter: "ß" is not "ss"; lone halves unchanged
  NSLiteralSearch = 2,
  NSBackwardsSearch = 4,  // from the end: finds the last occurrence
  NSAnchoredSearch = 8,   // only at the start of the searched text; with NSBackwardsSearch only at its end
};
[[nodiscard]] constexpr NSStringCompareOptions operator|(NSStringCompareOptions a, NSStringCompareOptions b) noexcept {
  return static_cast<NSStringCompareOptions>(static_cast<NSUInteger>(a) | static_cast<NSUInteger>(b));
}

namespace detail {

class StringIndex;
struct StringPlace;
const StringIndex* stringIndexOf(const NSString& text);

/// The header of a counted text, before its bytes in the same allocation.
struct StringStorage {
  AtomicWord<std::size_t> references{1};
  AtomicWord<const StringIndex*> index;
};

/// Not constexpr, so a constant that calls it does not compile and the error names this function.
inline void thisLiteralIsNotUtf8() noexcept {}

// The compiler shows these names for `for (char32_t each : text)` and `for (auto& each : optional)`.
struct ATextIsNotARange_LoopOverItsCodePoints {};
struct AnOptionalIsNotARange_TestItAndLoopOverWhatItHolds {};

/// The types that are compared with NSString as text, without creating an NSString.
template <class T>
concept PlainText = std::is_convertible_v<const T&, std::string_view> && !std::is_same_v<T, NSString> &&
                    !std::is_same_v<T, std::nullptr_t>;

/// Text in UTF-16, or in UTF-8 as char8_t.
template <class T>
concept UnicodeText = (std::is_convertible_v<const T&, std::u16string_view> ||
                       std::is_convertible_v<const T&, std::u8string_view>)&&!PlainText<T> &&
                      !std::is_same_v<T, NSString> && !std::is_same_v<T, std::nullptr_t>;

}  // namespace detail

class NK_EXPORT NSString {
 public:
  constexpr NSString() noexcept = default;

  /// The text up to the first NUL. A null pointer raises NSInvalidArgumentException; `nullptr` does not compile.
  constexpr NSString(const char* text);  // NOLINT(google-explicit-constructor): literals are texts
  NSString(std::nullptr_t) = delete;
  /// Bytes that are not UTF-8 become lone halves, as described above.
  constexpr NSString(std::string_view text);                               // NOLINT(google-explicit-constructor): text
  NSString(const std::string& text) : NSString(std::string_view(text)) {}  // NOLINT(google-explicit-constructor): text

  /// A u"" or u8"" literal, std::u16string, std::u8string and their views.
  template <detail::UnicodeText Text>
  NSString(const Text& text) : NSString(fromUnicode(text)) {}  // NOLINT(google-explicit-constructor): text

  constexpr NSString(const NSString& other) noexcept : data_(other.data_), bits_(other.bits_) { retain(); }
  constexpr NSString(NSString&& other) noexcept : data_(other.data_), bits_(other.bits_) {
    other.data_ = "";
    other.bits_ = asciiBit;
  }
  constexpr NSString& operator=(const NSString& other) noexcept {
    other.retain();
    release();
    data_ = other.data_;
    bits_ = other.bits_;
    return *this;
  }
  constexpr NSString& operator=(NSString&& other) noexcept {
    NSString taken(std::move(other));
    const char* const data = data_;
    const std::size_t bits = bits_;
    data_ = taken.data_;
    bits_ = taken.bits_;
    taken.data_ = data;
    taken.bits_ = bits;
    return *this;
  }
  constexpr ~NSString() { release(); }

  /// Absent if the bytes are not UTF-8.
  [[nodiscard]] static std::optional<NSString> fromUtf8(std::string_view text);
  /// The same as the constructor; the name shows the reader that the bytes may be anything.
  [[nodiscard]] static NSString fromBytes(std::string_view bytes);
  [[nodiscard]] static NSString fromUtf16(std::u16string_view units);
  /// One character, or one surrogate half; a number above U+10FFFF raises NSInvalidArgumentException.
  [[nodiscard]] static NSString fromCodePoint(char32_t point);
  /// Borrows bytes that stay valid and unchanged until the process ends. Bytes that are not UTF-8 are copied.
  [[nodiscard]] static NSString borrowing(std::string_view permanentText);

  /// The stored bytes: UTF-8, and three bytes for each lone half. Valid while this object or a copy of it lives.
  [[nodiscard]] constexpr std::string_view view() const noexcept { return {data_, byteCount()}; }
  /// view(), without a copy. Explicit, because the view is valid only while the text lives.
  explicit constexpr operator std::string_view() const noexcept { return view(); }
  [[nodiscard]] std::string str() const { return {data_, byteCount()}; }
  explicit operator std::string() const { return str(); }
  /// Always UTF-8: each lone half becomes U+FFFD. This form is printed.
  [[nodiscard]] std::string utf8() const;
  /// The bytes that this text represents: lone halves U+DC80 to U+DCFF become the bytes 0x80 to 0xFF again.
  [[nodiscard]] std::string bytes() const;
  [[nodiscard]] std::string fileSystemRepresentation() const { return bytes(); }
  [[nodiscard]] std::u16string toUtf16() const;

  [[nodiscard]] constexpr bool empty() const noexcept { return byteCount() == 0; }
  [[nodiscard]] constexpr bool isAscii() const noexcept { return (bits_ & asciiBit) != 0; }
  /// False if the text contains a lone surrogate half; then `view()` is not UTF-8.
  [[nodiscard]] constexpr bool isWellFormed() const noexcept { return (bits_ & halvesBit) == 0; }
  /// True for copies of one text, and for equal parts of one constant; false for two texts that were made separately.
  [[nodiscard]] constexpr bool isIdenticalTo(const NSString& other) const noexcept {
    return (data_ == other.data_ || empty()) && byteCount() == other.byteCount();
  }

  [[nodiscard]] NSUInteger length() const;
  /// length(): in UTF-16 units, not in bytes.
  [[nodiscard]] NSUInteger size() const { return length(); }
  [[nodiscard]] char16_t characterAtIndex(NSUInteger index) const;
  [[nodiscard]] NSString substringFromIndex(NSUInteger from) const;
  [[nodiscard]] NSString substringToIndex(NSUInteger to) const;
  [[nodiscard]] NSString substringWithRange(NSRange range) const;

  /// The first occurrence, or with NSBackwardsSearch the last; {NSNotFound, 0} if there is none or `text` is empty.
  [[nodiscard]] NSRange rangeOfString(const NSString& text, NSStringCompareOptions options = {}) const;
  /// The same within `range`; the result still counts from the start of the whole text.
  [[nodiscard]] NSRange rangeOfString(const NSString& text, NSStringCompareOptions options, NSRange range) const;
  [[nodiscard]] bool containsString(const NSString& text) const { return rangeOfString(text).length != 0; }
  /// False for empty text.
  [[nodiscard]] bool hasPrefix(const NSString& text) const;
  [[nodiscard]] bool hasSuffix(const NSString& text) const;

  [[nodiscard]] bool isEqualToString(const NSString& other) const noexcept { return *this == other; }
  [[nodiscard]] NSComparisonResult compare(const NSString& other, NSStringCompareOptions options = {}) const noexcept;
  [[nodiscard]] NSComparisonResult caseInsensitiveCompare(const NSString& other) const noexcept {
    return compare(other, NSCaseInsensitiveSearch);
  }

  [[nodiscard]] NSString stringByAppendingString(const NSString& text) const { return *this + text; }
  /// The pieces between the separators, including empty ones: always one more than there are separators. With an empty
  /// separator the result is the whole text.
  [[nodiscard]] std::vector<NSString> componentsSeparatedBy(const NSString& separator) const;
  /// Occurrences are found from the start and do not overlap. An empty target changes nothing. Of the options only
  /// NSCaseInsensitiveSearch has an effect.
  [[nodiscard]] NSString stringByReplacingOccurrencesOfString(const NSString& target, const NSString& replacement,
                                                              NSStringCompareOptions options = {}) const;
  /// Without the white space and line ends (as Unicode defines them) at both ends.
  [[nodiscard]] NSString stringByTrimming() const;

  /// The number at the start of the text, after white space; 0 if there is none, the nearest limit if it is too large.
  [[nodiscard]] int intValue() const noexcept;
  [[nodiscard]] NSInteger integerValue() const noexcept { return longLongValue(); }
  [[nodiscard]] std::int64_t longLongValue() const noexcept;
  /// With a decimal point in any locale, and an exponent: " 1.5e3 GBP" is 1500. Infinity if the number is too large.
  [[nodiscard]] double doubleValue() const noexcept;
  /// True if the text, after white space, a sign and zeros, begins with Y, y, T, t or a digit 1 to 9.
  [[nodiscard]] bool boolValue() const noexcept;

  /// "/tmp/pay.csv" gives "pay.csv"; trailing slashes are ignored; "/" gives "/".
  [[nodiscard]] NSString lastPathComponent() const;
  /// "/tmp/pay.csv" gives "csv"; a name whose only dots are leading ones has no extension.
  [[nodiscard]] NSString pathExtension() const;
  /// "/tmp/pay.csv" gives "/tmp", "/tmp" gives "/", "pay.csv" gives "".
  [[nodiscard]] NSString stringByDeletingLastPathComponent() const;
  /// "/tmp/pay.csv" gives "/tmp/pay"; trailing slashes are removed too; ".profile" is unchanged.
  [[nodiscard]] NSString stringByDeletingPathExtension() const;
  /// Joined by exactly one slash, without a trailing slash. With an empty path the result is the component.
  [[nodiscard]] NSString stringByAppendingPathComponent(const NSString& component) const;
  /// "/tmp/pay" and "csv" give "/tmp/pay.csv"; trailing slashes are removed first. An empty path or "/" is unchanged.
  [[nodiscard]] NSString stringByAppendingPathExtension(const NSString& extension) const;

  /// The characters in order, as a bidirectional range and view of char32_t; a lone half appears as its number. The
  /// range retains the text.
  class CodePoints;
  [[nodiscard]] CodePoints codePoints() const noexcept;
  /// The UTF-16 units in order, as a bidirectional range and view of char16_t, which retains the text.
  class Units;
  [[nodiscard]] Units units() const noexcept;

  /// Copies both texts: to append in a loop, use NSMutableString.
  NSString& operator+=(const NSString& text) { return *this = *this + text; }
  template <detail::PlainText Text>
  NSString& operator+=(const Text& text) {
    return *this = withAppended(text);
  }

  NK_EXPORT friend NSString operator+(const NSString& a, const NSString& b);
  template <detail::PlainText Text>
  [[nodiscard]] friend NSString operator+(const NSString& a, const Text& b) {
    return a.withAppended(b);
  }
  template <detail::PlainText Text>
  [[nodiscard]] friend NSString operator+(const Text& a, const NSString& b) {
    return b.withPrepended(a);
  }

  friend constexpr bool operator==(const NSString& a, const NSString& b) noexcept { return a.view() == b.view(); }
  friend std::strong_ordering operator<=>(const NSString& a, const NSString& b) noexcept { return a.order(b); }
  template <detail::PlainText Text>
  friend bool operator==(const NSString& a, const Text& b) {
    return a.isWellFormed() ? a.view() == std::string_view(b) : a == NSString(std::string_view(b));
  }
  template <detail::PlainText Text>
  friend std::strong_ordering operator<=>(const NSString& a, const Text& b) {
    return a.order(NSString(std::string_view(b)));
  }
  /// Writes `utf8()`.
  NK_EXPORT friend std::ostream& operator<<(std::ostream& out, const NSString& text);

  friend detail::ATextIsNotARange_LoopOverItsCodePoints begin(const NSString&) = delete;
  friend detail::ATextIsNotARange_LoopOverItsCodePoints end(const NSString&) = delete;

 private:
  friend class NSMutableString;
  friend const detail::StringIndex* detail::stringIndexOf(const NSString& text);
  static constexpr std::size_t countedBit = 1, asciiBit = 2, halvesBit = 4;
  static constexpr int sizeShift = 3;

  constexpr NSString(const char* data, std::size_t size, std::size_t flags) noexcept
      : data_(data), bits_(size << sizeShift | flags) {}

  [[nodiscard]] constexpr std::size_t byteCount() const noexcept { return bits_ >> sizeShift; }
  [[nodiscard]] detail::StringStorage* storage() const noexcept {
    return reinterpret_cast<detail::StringStorage*>(const_cast<char*>(data_) - sizeof(detail::StringStorage));
  }
  constexpr void retain() const noexcept {
    if ((bits_ & countedBit) != 0) storage()->references.addRelaxed(1);
  }
  constexpr void release() noexcept {
    if ((bits_ & countedBit) != 0) releaseStorage();
  }
  void releaseStorage() noexcept;
  template <class Text>
  static NSString fromUnicode(const Text& text) {
    if constexpr (std::is_convertible_v<const Text&, std::u16string_view>) {
      return fromUtf16(text);
    } else {
      const std::u8string_view bytes = text;
      return fromBytes({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
  }
  constexpr void borrowConstant(std::string_view text);

  /// A counted text of these bytes, which are UTF-8 except for lone halves, no two of which form a pair.
  [[nodiscard]] static NSString copying(std::string_view bytes);
  [[nodiscard]] static std::size_t flagsOf(std::string_view bytes) noexcept;
  /// Makes a new object the text of these bytes, as fromBytes() does.
  void copyBytes(std::string_view bytes);
  [[noreturn]] static void raiseNullPointer();
  [[nodiscard]] static NSString concatenating(std::string_view a, std::string_view b);
  [[nodiscard]] NSString withAppended(std::string_view text) const;
  [[nodiscard]] NSString withPrepended(std::string_view text) const;
  [[nodiscard]] NSString slice(std::size_t from, std::size_t to) const;
  [[nodiscard]] const detail::StringIndex* index() const;
  [[nodiscard]] std::strong_ordering order(const NSString& other) const noexcept;
  [[nodiscard]] NSString sliceBytes(std::size_t from, std::size_t to) const;
  [[nodiscard]] detail::StringPlace place(std::size_t unit) const;
  [[nodiscard]] std::vector<NSRange> matches(const NSString& text, NSStringCompareOptions options) const;
  [[nodiscard]] NSUInteger unitAtByte(std::size_t byte) const;
  void checkRange(const char* operation, NSRange range) const;
  [[noreturn]] void raiseBeyondEnd(const char* operation, NSUInteger index) const;

  const char* data_ = "";
  std::size_t bits_ = asciiBit;
};

class NSString::CodePoints {
 public:
  class iterator {
   public:
    using value_type = char32_t;
    using difference_type = std::ptrdiff_t;
    constexpr iterator() noexcept = default;
    constexpr explicit iterator(const char* at) noexcept : at_(at) {}
    constexpr char32_t operator*() const noexcept { return utf8::decode(at_).point; }
    constexpr iterator& operator++() noexcept {
      at_ += utf8::decode(at_).size;
      return *this;
    }
    constexpr iterator operator++(int) noexcept {
      iterator before = *this;
      ++*this;
      return before;
    }
    constexpr iterator& operator--() noexcept {
      do --at_;
      while (utf8::isContinuation(*at_));
      return *this;
    }
    constexpr iterator operator--(int) noexcept {
      iterator before = *this;
      --*this;
      return before;
    }
    friend constexpr bool operator==(iterator, iterator) noexcept = default;

   private:
    const char* at_ = nullptr;
  };

  explicit CodePoints(NSString text) noexcept : text_(std::move(text)) {}
  [[nodiscard]] iterator begin() const noexcept { return iterator(text_.view().data()); }
  [[nodiscard]] iterator end() const noexcept { return iterator(text_.view().data() + text_.view().size()); }

 private:
  NSString text_;
};

inline NSString::CodePoints NSString::codePoints() const noexcept { return CodePoints(*this); }

class NSString::Units {
 public:
  class iterator {
   public:
    using value_type = char16_t;
    using difference_type = std::ptrdiff_t;
    constexpr iterator() noexcept = default;
    constexpr explicit iterator(const char* at) noexcept : at_(at) {}
    constexpr char16_t operator*() const noexcept {
      const char32_t point = utf8::decode(at_).point;
      if (point < 0x10000) return static_cast<char16_t>(point);
      return isAtLowHalf_ ? utf8::lowHalf(point) : utf8::highHalf(point);
    }
    constexpr iterator& operator++() noexcept {
      const utf8::Character character = utf8::decode(at_);
      isAtLowHalf_ = character.point >= 0x10000 && !isAtLowHalf_;
      if (!isAtLowHalf_) at_ += character.size;
      return *this;
    }
    constexpr iterator operator++(int) noexcept {
      iterator before = *this;
      ++*this;
      return before;
    }
    constexpr iterator& operator--() noexcept {
      if (isAtLowHalf_) {
        isAtLowHalf_ = false;
      } else {
        do --at_;
        while (utf8::isContinuation(*at_));
        isAtLowHalf_ = utf8::decode(at_).point >= 0x10000;
      }
      return *this;
    }
    constexpr iterator operator--(int) noexcept {
      iterator before = *this;
      --*this;
      return before;
    }
    friend constexpr bool operator==(iterator, iterator) noexcept = default;

   private:
    const char* at_ = nullptr;
    bool isAtLowHalf_ = false;
  };

  explicit Units(NSString text) noexcept : text_(std::move(text)) {}
  [[nodiscard]] iterator begin() const noexcept { return iterator(text_.view().data()); }
  [[nodiscard]] iterator end() const noexcept { return iterator(text_.view().data() + text_.view().size()); }

 private:
  NSString text_;
};

inline NSString::Units NSString::units() const noexcept { return Units(*this); }

constexpr void NSString::borrowConstant(std::string_view text) {
  if (!utf8::isValid(text)) detail::thisLiteralIsNotUtf8();
  data_ = text.data();
  bits_ = text.size() << sizeShift | (utf8::isAscii(text) ? asciiBit : 0);
}

constexpr NSString::NSString(std::string_view text) {
  if (std::is_constant_evaluated()) {
    borrowConstant(text);
  } else {
    copyBytes(text);
  }
}

constexpr NSString::NSString(const char* text) {
  if (std::is_constant_evaluated()) {
    borrowConstant(text);
  } else {
    if (text == nullptr) raiseNullPointer();
    copyBytes(text);  // the compiler knows the length of a literal
  }
}

// Found by argument-dependent lookup if the optional holds a type of this library.
template <class T>
detail::AnOptionalIsNotARange_TestItAndLoopOverWhatItHolds begin(const std::optional<T>&) = delete;
template <class T>
detail::AnOptionalIsNotARange_TestItAndLoopOverWhatItHolds end(const std::optional<T>&) = delete;

inline namespace literals {

/// Borrows the literal, including NULs in it.
[[nodiscard]] consteval NSString operator""_ns(const char* text, std::size_t size) {
  return NSString(std::string_view(text, size));
}

}  // namespace literals

}  // namespace norvik

// Copies in constant time, so these ranges are views; <string_view> declares the template.
template <>
inline constexpr bool std::ranges::enable_view<norvik::NSString::CodePoints> = true;
template <>
inline constexpr bool std::ranges::enable_view<norvik::NSString::Units> = true;

template <>
struct std::hash<norvik::NSString> {
  std::size_t operator()(const norvik::NSString& text) const noexcept {
    return std::hash<std::string_view>{}(text.view());
  }
};
