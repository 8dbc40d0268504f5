// NorvikCore/platform/foundation/NSCharacterClass.h - classes of characters, by Unicode.
//
//   isUppercaseLetter(u'\u00C9');      // true
//   isWhitespace(U'\u00A0');           // true: a no-break space is white space too
//
// A surrogate half belongs to no class. Pure; any thread.
#pragma once

#include "NorvikCore/platform/export.h"

namespace norvik {

/// Capitals and title-case letters ("\u01C5").
[[nodiscard]] NK_EXPORT bool isUppercaseLetter(char32_t character) noexcept;
/// Unicode's space separators and the tab; no line break.
[[nodiscard]] NK_EXPORT bool isWhitespace(char32_t character) noexcept;
/// U+000A to U+000D, U+0085, U+2028 and U+2029.
[[nodiscard]] NK_EXPORT bool isLineBreak(char32_t character) noexcept;

}  // namespace norvik
