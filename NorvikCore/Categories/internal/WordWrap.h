// NorvikCore/Categories/internal/WordWrap.h - a text broken into lines that fit a width.
//
//   splitToWidth("net pay of April", 80, blankWidth, [&](const NSString& word) { return widthOf(word, font); });
//
// Each space and each tab ends a word, so two consecutive ones have an empty word between them. A word that is too wide
// has a line of its own. Line breaks do not end a word. They stay in it, and the width of a text with line breaks is
// the width of its widest line.
#pragma once

#include "NorvikCore/platform/foundation/NSCharacterClass.h"
#include "NorvikCore/platform/values/NSMutableString.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace norvik::detail {

/// The parts of the text between characters of a kind. There is always one part more than there are such characters.
template <class IsSeparator>
[[nodiscard]] std::vector<NSString> splitAt(const NSString& text, IsSeparator&& isSeparator) {
  std::vector<NSString> parts;
  const std::string_view bytes = text.view();
  std::size_t from = 0, at = 0;
  NSUInteger fromUnit = 0, unit = 0;
  // A text with lone surrogates is cut by units, because the bytes of a lone surrogate are not UTF-8.
  const auto addPart = [&] {
    parts.push_back(text.isWellFormed() ? NSString(bytes.substr(from, at - from))
                                        : text.substringWithRange({fromUnit, unit - fromUnit}));
  };
  while (at < bytes.size()) {
    const utf8::Character character = utf8::decode(bytes.data() + at);
    const NSUInteger units = character.point < 0x10000 ? 1 : 2;
    if (isSeparator(character.point)) {
      addPart();
      from = at + character.size;
      fromUnit = unit + units;
    }
    at += character.size;
    unit += units;
  }
  addPart();
  return parts;
}

/// The width of a text that may contain line breaks, in a form that allows texts to be appended.
struct TextExtent {
  double first = 0, last = 0, widest = 0;
  bool isOneLine = true;

  /// This text, a space, and the other text.
  [[nodiscard]] TextExtent followedBy(const TextExtent& other, double blankWidth) const {
    const double between = last + blankWidth + other.first;
    return {isOneLine ? between : first, other.isOneLine ? between : other.last,
            std::max({widest, other.widest, between}), isOneLine && other.isOneLine};
  }
};

template <class Measure>
[[nodiscard]] TextExtent extentOf(const NSString& word, Measure&& measure) {
  const std::vector<NSString> lines = splitAt(word, isLineBreak);
  TextExtent extent;
  extent.isOneLine = lines.size() == 1;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    extent.last = measure(lines[i]);
    if (i == 0) extent.first = extent.last;
    extent.widest = std::max(extent.widest, extent.last);
  }
  return extent;
}

/// `measure(word)` returns the width of a text without spaces, tabs and line breaks. The fraction of a line's width is
/// ignored. Measures each word once.
template <class Measure>
[[nodiscard]] std::vector<NSString> splitToWidth(const NSString& text, double maxWidth, double blankWidth,
                                                 Measure&& measure) {
  const std::vector<NSString> words = splitAt(text, isWhitespace);
  std::vector<NSString> lines;
  NSMutableString line(words.front());
  TextExtent extent = extentOf(words.front(), measure);
  for (std::size_t i = 1; i < words.size(); ++i) {
    const TextExtent next = extentOf(words[i], measure);
    const TextExtent longer = extent.followedBy(next, blankWidth);
    if (maxWidth >= std::trunc(longer.widest)) {
      line.appendString(" ");
      line.appendString(words[i]);
      extent = longer;
    } else {
      lines.push_back(line.string());
      line.setString(words[i]);
      extent = next;
    }
  }
  lines.push_back(line.string());
  return lines;
}

}  // namespace norvik::detail
