// NorvikCore/logging/internal/ConsoleColors.h - which colours the console can show, and how they are named there.
//
// The environment decides, once:
//
// | TERM                          | XcodeColors | colours                                                       |
// | contains "color" and "256"    | any         | the 240 of a terminal with 256 that are numbered 16 to 255    |
// | contains "color"              | any         | the 16 of a terminal                                          |
// | anything else, empty too      | any         | none                                                          |
// | not set                       | "YES"       | any: a plug-in of a debugger's console takes red, green, blue |
// | not set                       | other       | none                                                          |
//
// Capitals do not matter in TERM; XcodeColors is compared exactly.
//
// Threads: synchronised; a loaded table never changes.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace norvik::detail {

enum class ConsoleMode : std::uint8_t { plain, terminal, plugIn };

struct ConsoleColor {
  std::uint8_t red, green, blue;
};

/// What the environment says; loads the table of a terminal's colours.
[[nodiscard]] NK_EXPORT ConsoleMode consoleMode();

/// Load a table, unless one is loaded.
void loadConsoleColors16() noexcept;
void loadConsoleColors256() noexcept;
/// The table that is loaded; empty where none is.
[[nodiscard]] NK_EXPORT std::span<const ConsoleColor> consoleColors() noexcept;

/// The row of the loaded table whose colour is nearest, by the distance of red, green and blue (each 0 to 1); the first
/// of several, and 0 of an empty table.
[[nodiscard]] NK_EXPORT std::size_t nearestConsoleColor(double red, double green, double blue) noexcept;
/// What follows ESC [ for a row of the loaded table.
[[nodiscard]] NK_EXPORT std::string consoleForegroundCode(std::size_t row);
[[nodiscard]] NK_EXPORT std::string consoleBackgroundCode(std::size_t row);

}  // namespace norvik::detail
