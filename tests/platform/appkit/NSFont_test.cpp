#include "NorvikCore/platform/appkit/NSFont.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace norvik;

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
