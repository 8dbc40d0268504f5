// NorvikCore/platform/values/NSDecimalNumberHandler.h - how decimal arithmetic rounds, and which errors it raises.
//
//   const auto pennies = NSDecimalNumberHandler({.roundingMode = NSRoundBankers, .scale = 2});
//   (2.345_dec).decimalNumberByRoundingAccordingToBehavior(pennies);   // 2.34
//
// A value of 8 bytes: immutable, copied freely, safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik {

/// How a number between two neighbours is rounded. Plain: to the nearest, a half away from zero. Down: towards minus
/// infinity. Up: towards plus infinity. Bankers: to the nearest, a half to the even digit.
enum NSRoundingMode : unsigned { NSRoundPlain = 0, NSRoundDown = 1, NSRoundUp = 2, NSRoundBankers = 3 };

/// The scale that means "no rounding": a result keeps all its digits, up to 38.
inline constexpr std::int16_t NSDecimalNoScale = 32767;

/// A rounding behaviour: mode, scale and the errors that raise.
///
/// The scale is the greatest number of digits after the point; a negative scale rounds before the point (-3: to
/// thousands). Rounding never adds digits. An operation rounds its exact result once, to the scale or to 38 digits,
/// whichever is coarser.
///
/// Errors are determined from the exact result, before it is rounded to the scale. A sum that the scale shortens is not
/// a loss of precision, but 1/3 needs more than 38 digits and loses precision at any scale. If the flag of an error is
/// not set, the result is not-a-number; for a loss of precision it is the rounded number. Rounding to the scale can
/// also cause an overflow.
class NK_EXPORT NSDecimalNumberHandler {
 public:
  /// How to round, and which errors raise. An error that does not raise has the result described above.
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

  /// The behaviour of an operation without an explicit one: 38 digits, plain; overflow, underflow and division by zero
  /// raise. Every call returns the same object.
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
