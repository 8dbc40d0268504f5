#include "NorvikCore/logging/DDTTYLoggerColorProfile.h"

#include "NorvikCore/logging/internal/ConsoleColors.h"
#include "NorvikCore/platform/values/Format.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace norvik {
namespace {

using detail::ConsoleMode;

std::uint8_t byteOf(double component) noexcept { return static_cast<std::uint8_t>(component * 255); }

std::string_view resetCodeOf(ConsoleMode mode) noexcept {
  switch (mode) {
    case ConsoleMode::terminal:
      return "\033[0m";
    case ConsoleMode::plugIn:
      return "\033[;";
    case ConsoleMode::plain:
      break;
  }
  return "";
}

}  // namespace

DDTTYLoggerColorProfile::Ground DDTTYLoggerColorProfile::ground(const Ref<NSColor>& color, Side side) {
  Ground result;
  if (!color) return result;
  const bool isForeground = side == Side::foreground;
  result.red = byteOf(color->redComponent());
  result.green = byteOf(color->greenComponent());
  result.blue = byteOf(color->blueComponent());
  const ConsoleMode mode = detail::consoleMode();
  int length = 0;
  if (mode == ConsoleMode::terminal) {
    result.codeIndex =
        detail::nearestConsoleColor(color->redComponent(), color->greenComponent(), color->blueComponent());
    const std::string raw = isForeground ? detail::consoleForegroundCode(result.codeIndex)
                                         : detail::consoleBackgroundCode(result.codeIndex);
    result.codeRaw = NSString(raw);
    length = std::snprintf(result.code, sizeof result.code, "\033[%s", raw.c_str());
  } else if (mode == ConsoleMode::plugIn) {
    length = std::snprintf(result.code, sizeof result.code, "\033[%s%u,%u,%u;", isForeground ? "fg" : "bg",
                           unsigned{result.red}, unsigned{result.green}, unsigned{result.blue});
  }
  result.codeLen = std::min(static_cast<std::size_t>(length), sizeof result.code - 1);
  return result;
}

DDTTYLoggerColorProfile::DDTTYLoggerColorProfile(const Ref<NSColor>& foregroundColor,
                                                 const Ref<NSColor>& backgroundColor, int mask, int context)
    : mask_(mask),
      context_(context),
      foreground_(ground(foregroundColor, Side::foreground)),
      background_(ground(backgroundColor, Side::background)),
      resetCode_(resetCodeOf(detail::consoleMode())) {}

DDTTYLoggerColorProfile::~DDTTYLoggerColorProfile() = default;

Ref<DDTTYLoggerColorProfile> DDTTYLoggerColorProfile::initWithForegroundColor(const Ref<NSColor>& foregroundColor,
                                                                              const Ref<NSColor>& backgroundColor,
                                                                              int flag, int context) {
  return make<DDTTYLoggerColorProfile>(foregroundColor, backgroundColor, flag, context);
}

NSString DDTTYLoggerColorProfile::description() const {
  return stringWithFormat("<DDTTYLoggerColorProfile: %p mask:%i ctxt:%i fg:%u,%u,%u bg:%u,%u,%u fgCode:%@ bgCode:%@>",
                          static_cast<const void*>(this), mask_, context_, unsigned{fg_r()}, unsigned{fg_g()},
                          unsigned{fg_b()}, unsigned{bg_r()}, unsigned{bg_g()}, unsigned{bg_b()}, fgCodeRaw(),
                          bgCodeRaw());
}

}  // namespace norvik
