// NorvikCore/platform/appkit/NSColor.h - a colour: red, green, blue and alpha, each from 0 to 1.
//
//   text->addAttribute(NSForegroundColorAttributeName, NSColor::redColor(), {0, 5});
//
// Colours are immutable objects, equal if their components are equal; any thread. Components out of range are set to
// the nearest limit, not-a-number to 0.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSColor : public NSObject, public NSCoding {
  NK_OBJECT(NSColor, NSObject)
  NK_DECODED_BY(colorWithCoder)

  NSColor(double red, double green, double blue, double alpha);
  ~NSColor() override;

  [[nodiscard]] static Ref<NSColor> colorWithRed(double red, double green, double blue, double alpha);
  /// A grey between black (0) and white (1).
  [[nodiscard]] static Ref<NSColor> colorWithWhite(double white, double alpha);

  // The same object on every call.
  [[nodiscard]] static const Ref<NSColor>& blackColor();
  [[nodiscard]] static const Ref<NSColor>& whiteColor();
  [[nodiscard]] static const Ref<NSColor>& grayColor();
  [[nodiscard]] static const Ref<NSColor>& redColor();
  [[nodiscard]] static const Ref<NSColor>& greenColor();
  [[nodiscard]] static const Ref<NSColor>& blueColor();
  [[nodiscard]] static const Ref<NSColor>& clearColor();

  [[nodiscard]] double redComponent() const noexcept { return red_; }
  [[nodiscard]] double greenComponent() const noexcept { return green_; }
  [[nodiscard]] double blueComponent() const noexcept { return blue_; }
  [[nodiscard]] double alphaComponent() const noexcept { return alpha_; }
  [[nodiscard]] Ref<NSColor> colorWithAlphaComponent(double alpha) const;

  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// "#RRGGBB", followed by "AA" if the colour is not opaque.
  [[nodiscard]] NSString description() const override;

  /// Archives the components exactly.
  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSColor> colorWithCoder(NSCoder& coder);

 private:
  double red_, green_, blue_, alpha_;
};

}  // namespace norvik
