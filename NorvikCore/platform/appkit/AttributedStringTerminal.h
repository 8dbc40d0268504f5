// NorvikCore/platform/appkit/AttributedStringTerminal.h - attributed text for a terminal: bold, italic, underlined and
// coloured by escape sequences.
//
//   terminalText(*text, TerminalColors::Ansi16);      // "\033[1mPay\033[0m now"
//   terminalText(*text, TerminalColors::Plain);       // "Pay now": for a file, a pipe, or where the user wants no
//   colour
//
// Of a font only bold and italic count. A colour whose alpha is 0 sets nothing; every other one counts as opaque.
// Styles are set where a text begins that has them, and reset at its end and before each line's end, so nothing is set
// behind the text.
//
// The text itself cannot reach the terminal's controls. A line break of any kind, CR LF as one, becomes a line feed,
// and a tab stays. Every other control character, the escape among them, is shown by its picture (U+2400 to U+2421),
// and one of U+0080 to U+009F or a lone surrogate half as U+FFFD.
//
// Any thread. Linear.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <string>

namespace norvik {

/// What a terminal can show. A colour is taken to the nearest one there is.
enum class TerminalColors {
  Plain,       ///< text alone, without any escape sequence
  Monochrome,  ///< bold, italic and underlined, without colours
  Ansi16,      ///< the 8 colours and their bright forms, taken as xterm has them
  Ansi256,     ///< the cube of 216 colours and the 24 greys
  Direct,      ///< 24 bits
};

/// Whether a link is written so that a terminal can open it (OSC 8). Only addresses of http, https and mailto are, and
/// none where there are no escape sequences.
enum class TerminalLinks { Omitted, Written };

/// UTF-8.
[[nodiscard]] NK_EXPORT std::string terminalText(const NSAttributedString& text, TerminalColors colors,
                                                 TerminalLinks links = TerminalLinks::Omitted);

}  // namespace norvik
