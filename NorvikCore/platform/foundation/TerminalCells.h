// NorvikCore/platform/foundation/TerminalCells.h - the number of cells that a text takes in a line of a terminal.
//
//   terminalCells("Zo\u00EB");              // 3
//   terminalCells("Zoe\u0308");             // 3: a combining accent is drawn over the letter before it
//   terminalCells(U'\u738B');               // 2: Chinese, Japanese and Korean characters are wide, and most emoji
//
// Cells are counted character by character, as most terminals do: an emoji that is joined from several (a family, a
// skin tone) takes the cells of all of them, and a variation selector changes nothing. Characters that East Asian fonts
// draw wide and other fonts narrow ("ambiguous": \u00B1, \u03B1) count as narrow. A control character, including a line
// break, takes no cell; tab stops are not known here. By Unicode's properties; pure; any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>

namespace norvik {

/// 0, 1 or 2. A surrogate half takes 1, because a replacement mark is shown for it.
[[nodiscard]] NK_EXPORT std::size_t terminalCells(char32_t character) noexcept;
/// The sum over all characters. Linear.
[[nodiscard]] NK_EXPORT std::size_t terminalCells(const NSString& text) noexcept;

}  // namespace norvik
