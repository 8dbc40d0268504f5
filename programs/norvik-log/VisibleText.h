// programs/norvik-log/VisibleText.h - shows foreign texts safely: they cannot send commands to a terminal or reorder
// text.
#pragma once

#include <string>
#include <string_view>

namespace norvik_log {

enum class LineFeeds { Kept, Escaped };

/// Control characters and bytes that are not UTF-8 become escapes such as \x1b. Control characters beyond ASCII and
/// marks that change the direction of text become escapes such as \u202e. Tabs stay.
void appendVisible(std::string& result, std::string_view text, LineFeeds lineFeeds);

/// Each byte that is not UTF-8 becomes U+FFFD.
void appendValidUtf8(std::string& result, std::string_view text);

}  // namespace norvik_log
