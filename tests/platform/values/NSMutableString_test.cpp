#include "NorvikCore/platform/values/NSMutableString.h"

#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(NSMutableString, HeaderExample) {
  NSMutableString line;
  line.appendString("Net pay ");
  line.appendString("1,234.50");
  line.insertString("GBP ", 8);
  EXPECT_EQ(line.string(), "Net pay GBP 1,234.50");
}

TEST(NSMutableString, InsertsDeletesAndReplacesInUnits) {
  NSMutableString text("a\u00E9\U0001F4B7z");
  text.insertString("-", 2);
  EXPECT_EQ(text.string(), "a\u00E9-\U0001F4B7z");
  text.deleteCharactersInRange({1, 2});
  EXPECT_EQ(text.string(), "a\U0001F4B7z");
  text.replaceCharactersInRange({1, 2}, "bc");
  EXPECT_EQ(text.string(), "abcz");
  text.replaceCharactersInRange({4, 0}, "!");
  EXPECT_EQ(text.string(), "abcz!");
  EXPECT_EQ(text.length(), 5u);
  text.setString("");
  EXPECT_TRUE(text.empty());
}

TEST(NSMutableString, HalvesPartAndMeetAgain) {
  NSMutableString text("\U0001F4B7");
  text.insertString("-", 1);
  EXPECT_EQ(text.length(), 3u);
  EXPECT_EQ(text.string().toUtf16(), (std::u16string{0xD83D, u'-', 0xDCB7}));
  text.deleteCharactersInRange({1, 1});
  EXPECT_EQ(text.string(), "\U0001F4B7");
  text.deleteCharactersInRange({0, 1});
  EXPECT_EQ(text.characterAtIndex(0), 0xDCB7);
}

TEST(NSMutableString, AppendedHalvesMeet) {
  NSMutableString text;
  text.appendCodePoint(0xD83D);
  text.appendCodePoint(0xDCB7);
  EXPECT_EQ(text.view(), "\U0001F4B7");
}

TEST(NSMutableString, BytesThatAreNotUtf8TakeTheirForm) {
  NSMutableString text;
  text.appendString(std::string("a\xE9"));
  EXPECT_EQ(text.string().bytes(), "a\xE9");
  EXPECT_EQ(text.length(), 2u);
}

TEST(NSMutableString, LaterChangesDoNotReachTheTextTaken) {
  NSMutableString text(NSString("before"));
  const NSString taken = text.string();
  text.setString("after");
  EXPECT_EQ(taken, "before");
}

TEST(NSMutableString, RaisesForRangesBeyondTheTextAndStaysAsItWas) {
  NSMutableString text("ab");
  EXPECT_THROW(text.insertString("x", 3), NSException);
  EXPECT_THROW(text.deleteCharactersInRange({1, 2}), NSException);
  EXPECT_THROW(text.deleteCharactersInRange({NSNotFound, 1}), NSException);
  EXPECT_EQ(text.string(), "ab");
}

}  // namespace
}  // namespace norvik
