// examples/payrun/Characters.h - the length of texts in characters and in cells, and characters that must not be shown.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace payrun {

/// The offset of the first byte that is not UTF-8, or npos.
std::size_t firstInvalidUtf8(std::string_view text);

/// The size in bytes of the control character at the start of the text: 0 if there is none, 1, 2 for U+0080 to U+009F,
/// or 3. 3 bytes are a line or paragraph separator, or a mark that changes the direction of the text after it (U+2028
/// to U+202E, U+2066 to U+2069), so that an amount would be read backwards.
std::size_t controlCharacter(std::string_view text);

/// True if the text has a control character, such as a tab, a line end or the escape that begins a terminal command.
bool hasControlCharacter(std::string_view text);

/// True if each character is one of 0 to 9.
bool isDigits(std::string_view text);

/// The number of times that the byte occurs in the text.
std::size_t countOf(char byte, std::string_view text);

/// The number of characters of the text; a byte that is not UTF-8 counts as one.
std::size_t characterCount(std::string_view text);

/// The number of terminal cells that the text takes; a byte that is not UTF-8 takes one.
std::size_t cellCount(std::string_view text);

/// `text` for one line of a terminal: control characters and bytes that are not UTF-8 become \xNN, and the text is cut
/// after `longest` characters.
std::string oneLine(std::string_view text, std::size_t longest);

}  // namespace payrun
