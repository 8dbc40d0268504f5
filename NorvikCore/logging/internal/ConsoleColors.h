// NorvikCore/logging/internal/ConsoleColors.h - the colours that the console can show, and their codes there.
//
// The environment decides, at the first use:
//
// | TERM                          | XcodeColors | colours                                                       |
// | contains "color" and "256"    | any         | the 240 of a terminal with 256 that are numbered 16 to 255    |
// | contains "color"              | any         | the 16 of a terminal                                          |
// | anything else, empty too      | any         | none                                                          |
// | not set                       | "YES"       | any: a plug-in of a debugger's console takes red, green, blue |
// | not set                       | other       | none                                                          |
//
// TERM is compared without regard to case, XcodeColors exactly.
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

/// The mode that the environment selects. Loads the table of a terminal's colours.
[[nodiscard]] NK_EXPORT_FOR_TESTS ConsoleMode consoleMode();

/// Load a table, unless one is loaded.
void loadConsoleColors16() noexcept;
void loadConsoleColors256() noexcept;
/// The loaded table; empty if none is loaded.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::span<const ConsoleColor> consoleColors() noexcept;

/// The index of the nearest colour in the loaded table, by the distance of red, green and blue (each 0 to 1); the first
/// of several, and 0 for an empty table.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::size_t nearestConsoleColor(double red, double green, double blue) noexcept;
/// The code after ESC [ for a row of the loaded table.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::string consoleForegroundCode(std::size_t row);
[[nodiscard]] NK_EXPORT_FOR_TESTS std::string consoleBackgroundCode(std::size_t row);

}  // namespace norvik::detail
