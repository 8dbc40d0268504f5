// examples/payrun/Characters.h - texts as a reader counts them: in characters, not bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace payrun {

/// The offset of the first byte that is not UTF-8, or npos.
std::size_t firstInvalidUtf8(std::string_view text);

/// How many of the first bytes are a control character: 0, 1, 2 for U+0080 to U+009F, or 3 for a line or paragraph
/// separator and for what turns the direction of the text behind it (U+2028 to U+202E, U+2066 to U+2069), so that an
/// amount would be read backwards.
std::size_t controlCharacter(std::string_view text);

/// Whether the text has a control character, such as a tab, a line end or the escape that a terminal obeys.
bool hasControlCharacter(std::string_view text);

/// How many characters the text has; a byte that is not UTF-8 counts as one.
std::size_t characterCount(std::string_view text);

/// How many cells of a terminal the text takes; a byte that is not UTF-8 takes one.
std::size_t cellCount(std::string_view text);

/// `text` fit for one line of a terminal: control characters and bytes that are not UTF-8 as \xNN, and cut after
/// `longest` characters.
std::string oneLine(std::string_view text, std::size_t longest);

}  // namespace payrun
