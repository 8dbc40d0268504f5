// NorvikCore/platform/foundation/TerminalCells.h - how many cells of a terminal's line a text takes.
//
//   terminalCells("Zo\u00EB");              // 3
//   terminalCells("Zoe\u0308");             // 3: a combining accent stands over the letter before it
//   terminalCells(U'\u738B');               // 2: Chinese, Japanese and Korean characters are wide, and most emoji
//
// Counted character by character, as most terminals do: an emoji made of several that are joined (a family, a skin
// tone) takes the cells of all of them, and a variation selector changes nothing. What East Asian fonts draw wide and
// others narrow ("ambiguous": \u00B1, \u03B1) is narrow. A control character, a line break included, takes no cell;
// where a tab leads to is not known here. By Unicode's properties; pure; any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>

namespace norvik {

/// 0, 1 or 2. A surrogate half takes 1, as the mark that is shown in its place.
[[nodiscard]] NK_EXPORT std::size_t terminalCells(char32_t character) noexcept;
/// The sum over all characters. Linear.
[[nodiscard]] NK_EXPORT std::size_t terminalCells(const NSString& text) noexcept;

}  // namespace norvik
