// NorvikCore/logging/DDTTYLoggerColorProfile.h - the colours of one kind of message on the console, and the bytes that
// select them there.
//
//   auto profile = DDTTYLoggerColorProfile::initWithForegroundColor(NSColor::redColor(), nullptr, LOG_FLAG_ERROR, 7);
//   profile->fgCode();      // "\033[1;31m" if TERM is xterm-color
//
// DDTTYLogger creates these. Immutable; may be used on any thread.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/export.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace norvik {

class NK_EXPORT DDTTYLoggerColorProfile : public NSObject {
  NK_OBJECT(DDTTYLoggerColorProfile, NSObject)

  /// A context that means every context.
  static constexpr int everyContext = INT_MAX;

  /// `mask` is a sum of flags. An empty colour has components of 0 and no code, so that the console's own colour is
  /// used.
  DDTTYLoggerColorProfile(const Ref<NSColor>& foregroundColor, const Ref<NSColor>& backgroundColor, int mask,
                          int context);
  ~DDTTYLoggerColorProfile() override;
  [[nodiscard]] static Ref<DDTTYLoggerColorProfile> initWithForegroundColor(const Ref<NSColor>& foregroundColor,
                                                                            const Ref<NSColor>& backgroundColor,
                                                                            int flag, int context);

  [[nodiscard]] int mask() const noexcept { return mask_; }
  [[nodiscard]] int context() const noexcept { return context_; }

  /// The components times 255, rounded down; alpha is ignored.
  [[nodiscard]] std::uint8_t fg_r() const noexcept { return foreground_.red; }
  [[nodiscard]] std::uint8_t fg_g() const noexcept { return foreground_.green; }
  [[nodiscard]] std::uint8_t fg_b() const noexcept { return foreground_.blue; }
  [[nodiscard]] std::uint8_t bg_r() const noexcept { return background_.red; }
  [[nodiscard]] std::uint8_t bg_g() const noexcept { return background_.green; }
  [[nodiscard]] std::uint8_t bg_b() const noexcept { return background_.blue; }

  /// For a terminal: the index of the colour in its table, and the code without ESC [. Otherwise 0, and absent.
  [[nodiscard]] std::size_t fgCodeIndex() const noexcept { return foreground_.codeIndex; }
  [[nodiscard]] const std::optional<NSString>& fgCodeRaw() const noexcept { return foreground_.codeRaw; }
  [[nodiscard]] std::size_t bgCodeIndex() const noexcept { return background_.codeIndex; }
  [[nodiscard]] const std::optional<NSString>& bgCodeRaw() const noexcept { return background_.codeRaw; }

  /// The bytes before and after a line; empty if the console shows no colours. Valid as long as the profile.
  [[nodiscard]] std::string_view fgCode() const noexcept { return {foreground_.code, foreground_.codeLen}; }
  [[nodiscard]] std::size_t fgCodeLen() const noexcept { return foreground_.codeLen; }
  [[nodiscard]] std::string_view bgCode() const noexcept { return {background_.code, background_.codeLen}; }
  [[nodiscard]] std::size_t bgCodeLen() const noexcept { return background_.codeLen; }
  [[nodiscard]] std::string_view resetCode() const noexcept { return resetCode_; }
  [[nodiscard]] std::size_t resetCodeLen() const noexcept { return resetCode_.size(); }

  /// "<DDTTYLoggerColorProfile: 0x55d0c8a0 mask:1 ctxt:7 fg:255,0,0 bg:0,0,0 fgCode:1;31m bgCode:(null)>"
  [[nodiscard]] NSString description() const override;

 private:
  struct Ground {
    std::uint8_t red = 0, green = 0, blue = 0;
    std::size_t codeIndex = 0;
    std::optional<NSString> codeRaw;
    std::size_t codeLen = 0;
    char code[24] = {};
  };
  enum class Side : std::uint8_t { foreground, background };
  [[nodiscard]] static Ground ground(const Ref<NSColor>& color, Side side);

  int mask_, context_;
  Ground foreground_, background_;
  std::string_view resetCode_;  // a literal
};

}  // namespace norvik
