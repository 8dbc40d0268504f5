// examples/payrun/Characters.h - texts as a reader counts them: in characters, not bytes.
#pragma once

#include <cstddef>
#include <string_view>

namespace payrun {

/// The offset of the first byte that is not UTF-8, or npos.
std::size_t firstInvalidUtf8(std::string_view text);

/// How many of the first bytes are a control character: 0, 1, or 2 for U+0080 to U+009F.
std::size_t controlCharacter(std::string_view text);

/// Whether the text has a control character, such as a tab, a line end or the escape that a terminal obeys.
bool hasControlCharacter(std::string_view text);

/// How many characters the text has; a byte that is not UTF-8 counts as one.
std::size_t characterCount(std::string_view text);

/// How many columns of a terminal the text takes: its characters but for combining accents. Wide characters count as
/// one.
std::size_t columnCount(std::string_view text);

}  // namespace payrun
