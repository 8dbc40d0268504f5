// programs/norvik-log/VisibleText.h - texts of others, shown so that they cannot change how they are shown.
#pragma once

#include <string>
#include <string_view>

namespace norvik_log {

enum class LineFeeds { Kept, Escaped };

/// Control characters and bytes that are not UTF-8 become \x1b, those beyond ASCII and the marks that turn the
/// direction of text around \u202e. Tabs stay.
void appendVisible(std::string& result, std::string_view text, LineFeeds lineFeeds);

/// Bytes that are not UTF-8 become U+FFFD, one each.
void appendValidUtf8(std::string& result, std::string_view text);

}  // namespace norvik_log
