// NorvikCore/markup/internal/MarkupScan.h - scans marked-up text in one pass: gives the text without tags, and calls
// back for each tag that is opened or closed.
//
//   struct Tags {
//     bool open(std::string_view name, std::string_view rawAttributes, NSUInteger unit);   // false ends the scan
//     void close(NSUInteger unit);                                                         // the tag opened last
//   } tags;
//   MarkupScan scan(source, tags);
//   if (scan.run() && !scan.fault()) scan.text();
//
// Works on the bytes of NSString::view(). The characters that matter to markup are ASCII, and an ASCII byte is never
// part of another character.
#pragma once

#include "NorvikCore/platform/values/NSString.h"
#include "NorvikCore/platform/values/internal/Utf8Words.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace norvik::detail {

inline constexpr std::string_view blanksAndTabs = " \t";

/// Moves over bytes. upTo() and skip() return the bytes that they pass.
class ByteScanner {
 public:
  explicit ByteScanner(std::string_view bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] bool atEnd() const noexcept { return at_ == bytes_.size(); }
  [[nodiscard]] std::string_view rest() const noexcept { return bytes_.substr(at_); }
  std::string_view upTo(std::string_view set) noexcept { return passed(bytes_.find_first_of(set, at_)); }
  std::string_view skip(std::string_view set) noexcept { return passed(bytes_.find_first_not_of(set, at_)); }

 private:
  std::string_view passed(std::size_t to) noexcept {
    if (to == std::string_view::npos) to = bytes_.size();
    const std::string_view part = bytes_.substr(at_, to - at_);
    at_ = to;
    return part;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
};

/// Converts bytes of NSString::view() to a text, including lone surrogates.
[[nodiscard]] NSString textOfBytes(std::string_view bytes);

[[nodiscard]] inline bool isEndingName(std::string_view name) noexcept { return name.starts_with('/'); }
/// True if `ending`, which begins with "/", ends the tag `name`, ignoring case.
[[nodiscard]] bool isEndedBy(std::string_view name, std::string_view ending);

/// True if the names have the same bytes. Optimised for short names.
[[nodiscard]] inline bool areSameNames(std::string_view a, std::string_view b) noexcept {
  return a.size() == b.size() && (a.size() == 1 ? a[0] == b[0] : a == b);
}

/// Texts of errors. A name whose data() is null is absent.
[[nodiscard]] NSString wrongEnding(std::string_view ending, std::string_view expected);
[[nodiscard]] NSString stillOpen(const std::vector<std::string_view>& names);

/// The index of the first `wanted` in the eight bytes; 8 if there is none.
[[nodiscard]] inline std::size_t placeInWord(std::uint64_t word, char wanted) noexcept {
  constexpr std::uint64_t ones = 0x0101010101010101u, low = 0x7F7F7F7F7F7F7F7Fu;
  const std::uint64_t other = word ^ ones * static_cast<unsigned char>(wanted);
  const std::uint64_t zeros = ~(((other & low) + low) | other | low);
  constexpr bool firstIsLowest = std::endian::native == std::endian::little;
  return static_cast<std::size_t>(firstIsLowest ? std::countr_zero(zeros) : std::countl_zero(zeros)) / 8;
}

template <class Tags>
class MarkupScan {
 public:
  /// Both arguments must live as long as this object.
  MarkupScan(const NSString& source, Tags& tags)
      : source_(source),
        tags_(tags),
        bytes_(std::make_unique_for_overwrite<char[]>(source.view().size())),
        textEnd_(bytes_.get()),
        counted_(textEnd_) {}

  /// Call once. False if the tags ended the scan; then no other result is valid.
  [[nodiscard]] bool run() {
    const char* at = source_.view().data();
    const char* const end = at + source_.view().size();
    char* out = textEnd_;
    while (at != end) {
      const char* const text = at;
      at = copiedUpToLess(at, end, out);
      out += at - text;
      if (at == end) break;
      const bool isEscaped = at != text && out[-1] == escape;
      at = behindRun(at, end);
      if (isEscaped) {
        out[-1] = '<';
        continue;
      }
      const char* const body = at;
      at = greater(at, end);
      if (at == end) {
        out = std::copy(body, end, out);
        break;
      }
      const char* const bodyEnd = at;
      at = behindRun(at, end);
      textEnd_ = out;
      if (!take(body, bodyEnd)) return false;
      if (fault_) return true;
    }
    textEnd_ = out;
    if (!open_.empty()) fault_ = stillOpen(open_);
    return true;
  }

  /// The reason why the source is not valid markup; absent if it is valid.
  [[nodiscard]] const std::optional<NSString>& fault() const noexcept { return fault_; }
  /// The number of units of the text so far.
  [[nodiscard]] NSUInteger length() noexcept {
    if (source_.isAscii()) return static_cast<NSUInteger>(textEnd_ - bytes_.get());
    length_ += unitCountByWords({counted_, static_cast<std::size_t>(textEnd_ - counted_)});
    counted_ = textEnd_;
    return length_;
  }
  [[nodiscard]] NSString text() const {
    const std::string_view bytes(bytes_.get(), static_cast<std::size_t>(textEnd_ - bytes_.get()));
    return source_.isWellFormed() ? NSString(bytes) : textOfBytes(bytes);
  }

 private:
  static constexpr char escape = '\001';

  // The text is never longer than the part of the source read so far, so copying whole words stays within the buffer.
  static const char* copiedUpToLess(const char* at, const char* end, char* out) noexcept {
    for (; end - at >= 8; at += 8, out += 8) {
      std::uint64_t word;
      std::memcpy(&word, at, 8);
      std::memcpy(out, &word, 8);
      const std::size_t place = placeInWord(word, '<');
      if (place < 8) return at + place;
    }
    while (at != end && *at != '<') *out++ = *at++;
    return at;
  }

  /// Returns `end` if there is no ">".
  static const char* greater(const char* at, const char* end) noexcept {
    if (end - at >= 8) {
      std::uint64_t word;
      std::memcpy(&word, at, 8);
      const std::size_t place = placeInWord(word, '>');
      if (place < 8) return at + place;
    }
    const auto* const found = std::char_traits<char>::find(at, static_cast<std::size_t>(end - at), '>');
    return found ? found : end;
  }

  /// The position after the run of bytes equal to the byte at `at`.
  static const char* behindRun(const char* at, const char* end) noexcept {
    const char byte = *at;
    do ++at;
    while (at != end && *at == byte);
    return at;
  }

  bool take(const char* body, const char* bodyEnd) {
    while (body != bodyEnd && isBlankTabOrBreak(*body)) ++body;
    const char* nameEnd = body;
    while (nameEnd != bodyEnd && *nameEnd != ' ' && *nameEnd != '\t') ++nameEnd;
    std::string_view name;
    if (nameEnd != body) name = {body, static_cast<std::size_t>(nameEnd - body)};
    if (!isEndingName(name)) {
      open_.push_back(name);
      return tags_.open(name, {nameEnd, static_cast<std::size_t>(bodyEnd - nameEnd)}, length());
    }
    const std::string_view innermost = open_.empty() ? std::string_view() : open_.back();
    if (innermost.data() && (areSameNames(innermost, name.substr(1)) || isEndedBy(innermost, name))) {
      open_.pop_back();
      tags_.close(length());
    } else {
      fault_ = wrongEnding(name, innermost);
    }
    return true;
  }

  [[nodiscard]] static bool isBlankTabOrBreak(char byte) noexcept {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
  }

  const NSString& source_;
  Tags& tags_;
  const std::unique_ptr<char[]> bytes_;
  char* textEnd_;
  std::vector<std::string_view> open_;
  std::optional<NSString> fault_;
  const char* counted_;  ///< the text up to here has length_ units; not used for an ASCII source
  NSUInteger length_ = 0;
};

}  // namespace norvik::detail
