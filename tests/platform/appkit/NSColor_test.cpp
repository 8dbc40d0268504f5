#include "NorvikCore/platform/appkit/NSColor.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace norvik;

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
