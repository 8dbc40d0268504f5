#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include "tests/support/ExpectRaises.h"
#include "tests/support/ThroughArchivers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace norvik;

TEST(NSFont, HeaderExample) {
  const auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
  text->addAttribute(NSFontAttributeName, NSFont::fontWithName("DejaVu Sans", 11), {0, 5});
  EXPECT_EQ(text->attributesAtIndex(4)->objectForKey(NSFontAttributeName),
            Value(NSFont::fontWithName("DejaVu Sans", 11)));
  EXPECT_EQ(text->attributesAtIndex(5)->count(), 0u);
}

TEST(NSFont, KeepsFamilyAndSize) {
  const auto font = NSFont::fontWithName("DejaVu Sans", 11);
  EXPECT_EQ(font->familyName(), "DejaVu Sans");
  EXPECT_EQ(font->pointSize(), 11);
  EXPECT_FALSE(font->isBold());
  EXPECT_TRUE(NSFont::boldSystemFontOfSize(9)->isBold());
}

TEST(NSFont, WithoutANameThereIsNoneAndWithoutASizeTheSystemsCounts) {
  EXPECT_FALSE(NSFont::fontWithName("", 11));
  EXPECT_EQ(NSFont::fontWithName("DejaVu Sans", 0)->pointSize(), 13);
  EXPECT_EQ(NSFont::systemFontOfSize(std::nan(""))->pointSize(), 13);
}

TEST(NSFont, IsEqualByWhatItSays) {
  const auto font = NSFont::fontWithName("DejaVu Sans", 11);
  EXPECT_TRUE(font->isEqual(*NSFont::fontWithName("DejaVu Sans", 11)));
  EXPECT_EQ(font->hash(), NSFont::fontWithName("DejaVu Sans", 11)->hash());
  EXPECT_FALSE(font->isEqual(*NSFont::fontWithName("DejaVu Sans", 12)));
  EXPECT_FALSE(font->isEqual(*make<NSFont>("DejaVu Sans", 11, true)));
}

TEST(NSFont, DescribesItself) {
  EXPECT_EQ(make<NSFont>("DejaVu Sans", 11.5, true, true)->description(), "DejaVu Sans Bold Italic 11.5");
  EXPECT_EQ(NSFont::fontWithName("DejaVu Sans", 11)->description(), "DejaVu Sans 11");
}

TEST(NSFont, ComesBackFromBothArchivers) {
  for (const auto archived : norvik::test::throughBothArchivers) {
    for (const auto& font : {make<NSFont>("DejaVu Sans", 11.1, true, false), make<NSFont>("", 0.5, false, true)}) {
      const Value value = archived(font);
      const auto* back = value.object<NSFont>();
      ASSERT_TRUE(back);
      EXPECT_EQ(back->familyName(), font->familyName());
      EXPECT_EQ(back->pointSize(), font->pointSize());
      EXPECT_EQ(back->isBold(), font->isBold());
      EXPECT_EQ(back->isItalic(), font->isItalic());
    }
  }
}

TEST(NSFont, ADamagedSizeRaises) {
  const std::string_view sound("NKSEQU1\n\x09\0\0\0\x06NSFont\x08\0\x04Sans\x04\x16\x03\x02\x0b", 32);
  EXPECT_EQ(NSUnarchiver::unarchiveObjectWithData(*NSData::dataWithText(sound)), Value(make<NSFont>("Sans", 11, true)));
  std::string damaged(sound);
  damaged[28] = 0;  // the size
  EXPECT_RAISES((void)NSUnarchiver::unarchiveObjectWithData(*NSData::dataWithText(damaged)),
                "NSInvalidUnarchiveOperationException");
}
