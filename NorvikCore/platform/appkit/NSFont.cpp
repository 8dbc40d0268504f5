#include "NorvikCore/platform/appkit/NSFont.h"

#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/NSNumber.h"

#include <cmath>
#include <functional>
#include <utility>

namespace norvik {
namespace {

constinit const NSString systemFamily = "Sans";

double usable(double size) noexcept { return std::isfinite(size) && size > 0 ? size : NSFont::systemFontSize(); }

}  // namespace

NSFont::NSFont(NSString familyName, double pointSize, bool isBold, bool isItalic)
    : familyName_(std::move(familyName)), pointSize_(usable(pointSize)), isBold_(isBold), isItalic_(isItalic) {}

NSFont::~NSFont() = default;

Ref<NSFont> NSFont::fontWithName(const NSString& familyName, double size) {
  return familyName.empty() ? nullptr : make<NSFont>(familyName, size);
}

Ref<NSFont> NSFont::systemFontOfSize(double size) { return make<NSFont>(systemFamily, size); }

Ref<NSFont> NSFont::boldSystemFontOfSize(double size) { return make<NSFont>(systemFamily, size, true); }

bool NSFont::isEqual(const NSObject& other) const {
  const auto* font = dynamic_cast<const NSFont*>(&other);
  return font && familyName_ == font->familyName_ && pointSize_ == font->pointSize_ && isBold_ == font->isBold_ &&
         isItalic_ == font->isItalic_;
}

std::size_t NSFont::hash() const {
  return std::hash<NSString>()(familyName_) ^ std::hash<double>()(pointSize_) ^ (isBold_ ? 1u : 0u) ^
         (isItalic_ ? 2u : 0u);
}

NSString NSFont::description() const {
  return familyName_ + (isBold_ ? " Bold" : "") + (isItalic_ ? " Italic " : " ") + NSNumber(pointSize_).stringValue();
}

void NSFont::encodeWithCoder(NSCoder& coder) const {
  coder.encodeValue(familyName_);
  coder.encodeValue(pointSize_);
  coder.encodeValue(isBold_);
  coder.encodeValue(isItalic_);
}

Ref<NSFont> NSFont::fontWithCoder(NSCoder& coder) {
  const auto familyName = coder.decodeValue<NSString>();
  const auto pointSize = coder.decodeValue<double>();
  const auto isBold = coder.decodeValue<bool>();
  const auto isItalic = coder.decodeValue<bool>();
  if (pointSize != usable(pointSize)) {
    NSException::raise(NSInvalidUnarchiveOperationException, "a font's size is not a number above 0");
  }
  return make<NSFont>(familyName, pointSize, isBold, isItalic);
}

}  // namespace norvik
