// NorvikCore/platform/values/internal/CaseFolding.h - maps letters that differ only in case to the same letter.
#pragma once

#include "NorvikCore/platform/export.h"

namespace norvik::detail {

/// Unicode's simple folding of letters beyond ASCII.
[[nodiscard]] NK_EXPORT_FOR_TESTS char32_t foldCaseBeyondAscii(char32_t point) noexcept;

/// Unicode's simple case folding: one character maps to one character, independent of the language.
[[nodiscard]] inline char32_t foldCase(char32_t point) noexcept {
  if (point < 0x80) return point >= U'A' && point <= U'Z' ? point + 32 : point;
  return foldCaseBeyondAscii(point);
}

}  // namespace norvik::detail
