// NorvikCore/platform/appkit/AttributedStringTerminal.h - attributed text for a terminal: bold, italic, underlined and
// coloured by escape sequences.
//
//   terminalText(*text, TerminalColors::Ansi16);      // "\033[1mPay\033[0m now"
//   terminalText(*text, TerminalColors::Plain);       // "Pay now": for a file or a pipe, or if colour is not wanted
//
// Of a font only bold and italic are used. A colour with an alpha of 0 is ignored; every other colour is treated as
// opaque. A style is set where its text begins, and reset at its end and before the end of each line, so that no style
// is set after the text.
//
// The content of the text cannot control the terminal. A line break of any kind (CR LF is one) becomes a line feed, and
// a tab stays. Every other control character, including escape, is replaced by its picture (U+2400 to U+2421). U+0080
// to U+009F and lone surrogate halves are replaced by U+FFFD.
//
// Any thread. Linear.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <string>

namespace norvik {

/// The abilities of the terminal. A colour is replaced by the nearest one that the terminal has.
enum class TerminalColors {
  Plain,       ///< text alone, without any escape sequence
  Monochrome,  ///< bold, italic and underlined, without colours
  Ansi16,      ///< the 8 colours and their bright forms, with the values of xterm
  Ansi256,     ///< the cube of 216 colours and the 24 greys
  Direct,      ///< 24 bits
};

/// Whether a link is written so that a terminal can open it (OSC 8). Only URLs of http, https and mailto are written,
/// and none for TerminalColors::Plain.
enum class TerminalLinks { Omitted, Written };

/// UTF-8.
[[nodiscard]] NK_EXPORT std::string terminalText(const NSAttributedString& text, TerminalColors colors,
                                                 TerminalLinks links = TerminalLinks::Omitted);

}  // namespace norvik
