// NorvikCore/platform/appkit/NSFont.h - a font: a family, a size in points, and whether it is bold or italic.
//
//   text->addAttribute(NSFontAttributeName, NSFont::fontWithName("DejaVu Sans", 11), {0, 5});
//
// Fonts are immutable objects, equal if all properties are equal; any thread. A font object may name a font that the
// machine does not have.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSFont : public NSObject, public NSCoding {
  NK_OBJECT(NSFont, NSObject)
  NK_DECODED_BY(fontWithCoder)

  NSFont(NSString familyName, double pointSize, bool isBold = false, bool isItalic = false);
  ~NSFont() override;

  /// An empty Ref for an empty name. A size that is not above 0 or not a finite number becomes the system's size.
  [[nodiscard]] static Ref<NSFont> fontWithName(const NSString& familyName, double size);
  /// The desktop's sans-serif family.
  [[nodiscard]] static Ref<NSFont> systemFontOfSize(double size);
  [[nodiscard]] static Ref<NSFont> boldSystemFontOfSize(double size);
  [[nodiscard]] static constexpr double systemFontSize() noexcept { return 13; }

  [[nodiscard]] const NSString& familyName() const noexcept { return familyName_; }
  [[nodiscard]] double pointSize() const noexcept { return pointSize_; }
  [[nodiscard]] bool isBold() const noexcept { return isBold_; }
  [[nodiscard]] bool isItalic() const noexcept { return isItalic_; }

  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// "DejaVu Sans Bold Italic 11".
  [[nodiscard]] NSString description() const override;

  /// Archives its properties exactly; this machine need not have the font.
  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSFont> fontWithCoder(NSCoder& coder);

 private:
  const NSString familyName_;
  const double pointSize_;
  const bool isBold_, isItalic_;
};

}  // namespace norvik
