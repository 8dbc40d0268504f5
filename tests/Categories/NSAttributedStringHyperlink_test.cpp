#include "NorvikCore/Categories/NSAttributedString+Hyperlink.h"

#include "NorvikCore/platform/appkit/NSColor.h"

#include <gtest/gtest.h>

namespace norvik {

TEST(NSAttributedStringHyperlink, HeaderExample) {
  const auto link = hyperlinkFromString("HMRC", "https://www.gov.uk/");
  EXPECT_EQ(link->string(), "HMRC");
  NSRange run;
  EXPECT_TRUE(link->attributesAtIndex(0, &run)->isEqual(*NSDictionary::dictionaryWith(
      {{NSLinkAttributeName, "https://www.gov.uk/"}, {NSForegroundColorAttributeName, NSColor::blueColor()}})));
  EXPECT_EQ(run, (NSRange{0, 4}));
}

TEST(NSAttributedStringHyperlink, OfAnEmptyTextIsEmpty) { EXPECT_EQ(hyperlinkFromString("", "x")->length(), 0u); }

}  // namespace norvik
