// NorvikCore/platform/values/internal/CaseFolding.h - letters that differ only in case become the same letter.
#pragma once

#include "NorvikCore/platform/export.h"

namespace norvik::detail {

/// Unicode's simple folding of letters beyond ASCII.
[[nodiscard]] NK_EXPORT char32_t foldCaseBeyondAscii(char32_t point) noexcept;

/// Unicode's simple case folding: one character becomes one character, in no particular language.
[[nodiscard]] inline char32_t foldCase(char32_t point) noexcept {
  if (point < 0x80) return point >= U'A' && point <= U'Z' ? point + 32 : point;
  return foldCaseBeyondAscii(point);
}

}  // namespace norvik::detail
