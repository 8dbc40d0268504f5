#include "NorvikCore/platform/appkit/NSColor.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cmath>
#include <functional>

namespace norvik {
namespace {

double limited(double component) noexcept {
  if (!(component > 0)) return 0;
  return component < 1 ? component : 1;
}

int byteOf(double component) noexcept { return static_cast<int>(std::lround(component * 255)); }

Ref<NSColor>* kept(double red, double green, double blue, double alpha) {
  return new Ref<NSColor>(make<NSColor>(red, green, blue, alpha));
}

}  // namespace

NSColor::NSColor(double red, double green, double blue, double alpha)
    : red_(limited(red)), green_(limited(green)), blue_(limited(blue)), alpha_(limited(alpha)) {}

NSColor::~NSColor() = default;

Ref<NSColor> NSColor::colorWithRed(double red, double green, double blue, double alpha) {
  return make<NSColor>(red, green, blue, alpha);
}

Ref<NSColor> NSColor::colorWithWhite(double white, double alpha) { return make<NSColor>(white, white, white, alpha); }

const Ref<NSColor>& NSColor::blackColor() {
  return kernel::madeOnce([] { return kept(0, 0, 0, 1); });
}
const Ref<NSColor>& NSColor::whiteColor() {
  return kernel::madeOnce([] { return kept(1, 1, 1, 1); });
}
const Ref<NSColor>& NSColor::grayColor() {
  return kernel::madeOnce([] { return kept(0.5, 0.5, 0.5, 1); });
}
const Ref<NSColor>& NSColor::redColor() {
  return kernel::madeOnce([] { return kept(1, 0, 0, 1); });
}
const Ref<NSColor>& NSColor::greenColor() {
  return kernel::madeOnce([] { return kept(0, 1, 0, 1); });
}
const Ref<NSColor>& NSColor::blueColor() {
  return kernel::madeOnce([] { return kept(0, 0, 1, 1); });
}
const Ref<NSColor>& NSColor::clearColor() {
  return kernel::madeOnce([] { return kept(0, 0, 0, 0); });
}

Ref<NSColor> NSColor::colorWithAlphaComponent(double alpha) const { return make<NSColor>(red_, green_, blue_, alpha); }

bool NSColor::isEqual(const NSObject& other) const {
  const auto* color = dynamic_cast<const NSColor*>(&other);
  return color && red_ == color->red_ && green_ == color->green_ && blue_ == color->blue_ && alpha_ == color->alpha_;
}

std::size_t NSColor::hash() const {
  std::size_t hash = 0;
  for (const double component : {red_, green_, blue_, alpha_}) hash = hash * 31 + std::hash<double>()(component);
  return hash;
}

NSString NSColor::description() const {
  const NSString opaque = stringWithFormat("#%02X%02X%02X", byteOf(red_), byteOf(green_), byteOf(blue_));
  return alpha_ == 1 ? opaque : opaque + stringWithFormat("%02X", byteOf(alpha_));
}

void NSColor::encodeWithCoder(NSCoder& coder) const {
  for (const double component : {red_, green_, blue_, alpha_}) coder.encodeValue(component);
}

Ref<NSColor> NSColor::colorWithCoder(NSCoder& coder) {
  double components[4];
  for (double& component : components) {
    component = coder.decodeValue<double>();
    if (component != limited(component)) {
      NSException::raise(NSInvalidUnarchiveOperationException, "a colour's component is not from 0 to 1");
    }
  }
  return make<NSColor>(components[0], components[1], components[2], components[3]);
}

}  // namespace norvik
