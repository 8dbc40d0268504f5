// programs/norvik-log/Digit.h - ASCII digits, independent of the locale.
#pragma once

namespace norvik_log {

constexpr bool isDigit(char byte) noexcept { return byte >= '0' && byte <= '9'; }

}  // namespace norvik_log
