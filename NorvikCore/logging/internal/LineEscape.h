// NorvikCore/logging/internal/LineEscape.h - escapes a text so that it stays within one line, and unescapes it.
//
//   appendEscaped(line, "paid\n\033[2Jnobody");      // paid\n\x1b[2Jnobody, in one line
//   unescapedText("paid\\nnobody");                    // the line feed again
//
// | what                                                          | becomes       |
// | backslash, line feed, carriage return, tab                    | \\ \n \r \t   |
// | other control characters of ASCII, DEL                        | \x00 to \x7f  |
// | a byte that was not UTF-8 (see NSString.h)                    | \x80 to \xff  |
// | other lone surrogate halves, the control characters from      | \ud800        |
// | U+0080 to U+009F, line and paragraph separator (U+2028,       |               |
// | U+2029), marks that change the direction of text (U+202A to   |               |
// | U+202E, U+2066 to U+2069)                                     |               |
//
// The result is UTF-8. Different texts have different results. Pure; any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

/// The number of leading bytes that are ASCII and need no escape. Tests eight bytes at once.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::size_t plainPrefix(std::string_view text) noexcept;

/// Appends the escaped text; `text` is the view() of an NSString. The ASCII character `alsoEscaped`, if any, becomes \x
/// and two digits too.
NK_EXPORT_FOR_TESTS void appendEscaped(std::string& line, std::string_view text, char alsoEscaped = '\0');

/// The original text; absent if a backslash does not begin one of the table's forms, or if the text has a lone
/// surrogate half.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::optional<NSString> unescapedText(const NSString& line);

}  // namespace norvik::detail
