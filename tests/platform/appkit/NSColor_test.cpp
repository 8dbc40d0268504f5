#include "NorvikCore/platform/appkit/NSColor.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/ThroughArchivers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace norvik;

TEST(NSColor, HeaderExample) {
  const auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
  text->addAttribute(NSForegroundColorAttributeName, NSColor::redColor(), {0, 5});
  EXPECT_EQ(text->attributesAtIndex(4)->objectForKey(NSForegroundColorAttributeName), Value(NSColor::redColor()));
  EXPECT_EQ(text->attributesAtIndex(5)->count(), 0u);
}

TEST(NSColor, KeepsItsComponentsWithinTheirRange) {
  const auto color = NSColor::colorWithRed(0.25, 2, -1, std::nan(""));
  EXPECT_EQ(color->redComponent(), 0.25);
  EXPECT_EQ(color->greenComponent(), 1);
  EXPECT_EQ(color->blueComponent(), 0);
  EXPECT_EQ(color->alphaComponent(), 0);
}

TEST(NSColor, IsEqualByItsComponents) {
  const auto red = NSColor::colorWithRed(1, 0, 0, 1);
  EXPECT_TRUE(red->isEqual(*NSColor::redColor()));
  EXPECT_EQ(red->hash(), NSColor::redColor()->hash());
  EXPECT_EQ(Value(red), Value(NSColor::redColor()));
  EXPECT_FALSE(red->isEqual(*red->colorWithAlphaComponent(0.5)));
  EXPECT_FALSE(red->isEqual(*NSColor::blueColor()));
  EXPECT_EQ(NSColor::redColor(), NSColor::redColor());
}

TEST(NSColor, DescribesItselfInHexadecimal) {
  EXPECT_EQ(NSColor::colorWithRed(1, 0.5, 0, 1)->description(), "#FF8000");
  EXPECT_EQ(NSColor::colorWithWhite(1, 0.2)->description(), "#FFFFFF33");
}

namespace {

/// The archive of a colour with these four components.
Ref<NSData> archiveOfComponents(double red, double green, double blue, double alpha) {
  const auto data = NSArchiver::archivedDataWithRootObject(NSArray::arrayWithObjects(red, green, blue, alpha));
  const std::string content(data->text().substr(12));  // after the mark, the new object, its kind and count
  return NSData::dataWithText(std::string("NKSEQU1\n\x09\0\0\0\x07NSColor", 20) + content + "\x0b");
}

}  // namespace

TEST(NSColor, ComesBackExactlyFromBothArchivers) {
  const auto color = NSColor::colorWithRed(0.1, 1.0 / 3, 0, 0.7000000000000001);
  for (const auto archived : norvik::test::throughBothArchivers) {
    const Value value = archived(color);
    const auto* back = value.object<NSColor>();
    ASSERT_TRUE(back);
    EXPECT_EQ(back->redComponent(), 0.1);
    EXPECT_EQ(back->greenComponent(), 1.0 / 3);
    EXPECT_EQ(back->blueComponent(), 0);
    EXPECT_EQ(back->alphaComponent(), 0.7000000000000001);
  }
}

TEST(NSColor, DamagedComponentsRaise) {
  EXPECT_EQ(NSUnarchiver::unarchiveObjectWithData(*archiveOfComponents(1, 0, 0, 1)), Value(NSColor::redColor()));
  EXPECT_RAISES((void)NSUnarchiver::unarchiveObjectWithData(*archiveOfComponents(1.5, 0, 0, 1)),
                "NSInvalidUnarchiveOperationException");
  EXPECT_RAISES((void)NSUnarchiver::unarchiveObjectWithData(*archiveOfComponents(0, 0, std::nan(""), 1)),
                "NSInvalidUnarchiveOperationException");
}
