// NorvikCore/Categories/internal/WordWrap.h - a text broken into lines that fit a width.
//
//   splitToWidth("net pay of April", 80, [&](const NSString& line) { return widthOf(line, font); });
//
// Each blank and each tab ends a word, so that two of them have an empty word between them. A word that is too wide has
// a line of its own. Line breaks are no blanks: they stay in their word.
#pragma once

#include "NorvikCore/platform/foundation/NSCharacterClass.h"
#include "NorvikCore/platform/values/NSMutableString.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace norvik::detail {

/// Always one more than there are blanks.
[[nodiscard]] inline std::vector<NSString> wordsOf(const NSString& text) {
  std::vector<NSString> words;
  NSMutableString word;
  for (const char32_t point : text.codePoints()) {
    if (isWhitespace(point)) {
      words.push_back(word.string());
      word = NSMutableString();
    } else {
      word.appendCodePoint(point);
    }
  }
  words.push_back(word.string());
  return words;
}

/// `measure(line)` is the width of a line; its fraction does not count. Measures each line once for each word in it.
template <class Measure>
[[nodiscard]] std::vector<NSString> splitToWidth(const NSString& text, double maxWidth, Measure&& measure) {
  const std::vector<NSString> words = wordsOf(text);
  std::vector<NSString> lines;
  NSString line;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (line.empty()) line = words[i];
    if (i + 1 == words.size()) {
      lines.push_back(line);
      break;
    }
    const NSString longer = line + " " + words[i + 1];
    if (maxWidth >= std::trunc(measure(longer))) {
      line = longer;
    } else {
      lines.push_back(line);
      line = NSString();
    }
  }
  return lines;
}

}  // namespace norvik::detail
