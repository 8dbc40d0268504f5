// NorvikCore/platform/values/NSDecimalNumberHandler.h - how decimal arithmetic rounds, and which faults it raises.
//
//   const auto pennies = NSDecimalNumberHandler({.roundingMode = NSRoundBankers, .scale = 2});
//   (2.345_dec).decimalNumberByRoundingAccordingToBehavior(pennies);   // 2.34
//
// A value of 8 bytes: immutable, copied freely, safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik {

/// Which neighbour a number becomes that lies between two of them. Plain is the nearest, a half going away from zero;
/// down is towards minus infinity and up towards plus infinity, for negative numbers too; bankers is the nearest, a
/// half going to the even digit.
enum NSRoundingMode : unsigned { NSRoundPlain = 0, NSRoundDown = 1, NSRoundUp = 2, NSRoundBankers = 3 };

/// The scale that asks for no rounding: a result keeps all its digits, up to 38.
inline constexpr std::int16_t NSDecimalNoScale = 32767;

/// A rounding behaviour: mode, scale and the faults that raise.
///
/// The scale is the greatest number of digits after the point; negative scales round before it (-3: to thousands).
/// Rounding never adds digits. An operation rounds its exact result once, to the scale or to 38 digits, whichever is
/// coarser.
///
/// Faults are judged on the exact result, before the scale rounds it: a sum that a scale shortens has lost nothing,
/// but 1/3 needs more than 38 digits and loses precision whatever the scale. A fault whose flag is not set gives
/// not-a-number, except for a loss of precision, which gives the rounded number. A scale may round up to an overflow.
class NK_EXPORT NSDecimalNumberHandler {
 public:
  struct Settings {
    NSRoundingMode roundingMode = NSRoundPlain;
    std::int16_t scale = NSDecimalNoScale;
    bool raiseOnExactness = false;
    bool raiseOnOverflow = true;
    bool raiseOnUnderflow = true;
    bool raiseOnDivideByZero = true;
  };

  explicit constexpr NSDecimalNumberHandler(const Settings& settings) noexcept
      : scale_(settings.scale),
        roundingMode_(static_cast<std::uint8_t>(settings.roundingMode)),
        raiseOnExactness_(settings.raiseOnExactness),
        raiseOnOverflow_(settings.raiseOnOverflow),
        raiseOnUnderflow_(settings.raiseOnUnderflow),
        raiseOnDivideByZero_(settings.raiseOnDivideByZero) {}

  [[nodiscard]] static constexpr NSDecimalNumberHandler decimalNumberHandlerWithRoundingMode(
      NSRoundingMode roundingMode, std::int16_t scale, bool raiseOnExactness, bool raiseOnOverflow,
      bool raiseOnUnderflow, bool raiseOnDivideByZero) noexcept {
    return NSDecimalNumberHandler(
        {roundingMode, scale, raiseOnExactness, raiseOnOverflow, raiseOnUnderflow, raiseOnDivideByZero});
  }

  /// The behaviour of an operation that names none: 38 digits, plain; overflow, underflow and division by zero raise.
  /// The same object on every call.
  [[nodiscard]] static const NSDecimalNumberHandler& defaultDecimalNumberHandler() noexcept;

  [[nodiscard]] constexpr NSRoundingMode roundingMode() const noexcept {
    return static_cast<NSRoundingMode>(roundingMode_);
  }
  [[nodiscard]] constexpr std::int16_t scale() const noexcept { return scale_; }
  [[nodiscard]] constexpr bool raiseOnExactness() const noexcept { return raiseOnExactness_; }
  [[nodiscard]] constexpr bool raiseOnOverflow() const noexcept { return raiseOnOverflow_; }
  [[nodiscard]] constexpr bool raiseOnUnderflow() const noexcept { return raiseOnUnderflow_; }
  [[nodiscard]] constexpr bool raiseOnDivideByZero() const noexcept { return raiseOnDivideByZero_; }

  [[nodiscard]] friend constexpr bool operator==(const NSDecimalNumberHandler&,
                                                 const NSDecimalNumberHandler&) noexcept = default;

 private:
  std::int16_t scale_;
  std::uint8_t roundingMode_;
  bool raiseOnExactness_, raiseOnOverflow_, raiseOnUnderflow_, raiseOnDivideByZero_;
};

}  // namespace norvik
