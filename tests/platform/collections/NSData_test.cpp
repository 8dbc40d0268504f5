#include "NorvikCore/platform/collections/NSData.h"

#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

using norvik::test::nameOfWhatIsRaised;

TEST(NSData, HeaderExample) {
  Ref<NSData> data = NSData::dataWithBytes("pay\n", 4);
  EXPECT_EQ(data->length(), 4u);
  EXPECT_EQ(data->subdataWithRange({0, 3})->text(), "pay");
}

TEST(NSData, ARangeBeyondTheEndRaises) {
  const auto data = NSData::dataWithText("abc");
  EXPECT_EQ(data->subdataWithRange({3, 0})->length(), 0u);
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)data->subdataWithRange({2, 2}); }), "NSRangeException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)data->subdataWithRange({1, NSNotFound}); }), "NSRangeException");
}

TEST(NSData, EqualityAndHashLookAtTheBytes) {
  const auto changing = NSMutableData::data();
  changing->appendText("abc");
  EXPECT_TRUE(NSData::dataWithText("abc")->isEqualToData(*changing));
  EXPECT_EQ(NSData::dataWithText("abc")->hash(), changing->hash());
  EXPECT_FALSE(NSData::dataWithText("abd")->isEqualToData(*changing));
}

TEST(NSData, DescribesItsBytesInGroupsAndCutsLongOnes) {
  EXPECT_EQ(NSData::data()->description(), "<>");
  EXPECT_EQ(NSData::dataWithText("pay\n\xff")->description(), "<7061790a ff>");
  const std::string text = NSMutableData::dataWithLength(65)->description().str();
  EXPECT_EQ(text.substr(text.size() - 22), "00000000 ... 65 bytes>");
}

TEST(NSData, ACopyOfDataThatDoNotChangeIsItself) {
  const auto data = NSData::dataWithText("a");
  EXPECT_EQ(data->copy(), data);
  const auto changing = data->mutableCopy();
  const auto copy = changing->copy();
  changing->appendText("b");
  EXPECT_EQ(data->text(), "a");
  EXPECT_EQ(copy->text(), "a");
  EXPECT_EQ(changing->text(), "ab");
}

TEST(NSMutableData, HeaderExample) {
  const std::uint16_t code = 0x4142;
  auto line = NSMutableData::data();
  line->appendText("1257L,");
  line->appendBytes(&code, sizeof code);
  EXPECT_EQ(line->length(), 8u);
  line->setLength(6);
  EXPECT_EQ(line->text(), "1257L,");
}

TEST(NSMutableData, ReplacesARangeByMoreFewerAndItsOwnBytes) {
  auto data = NSMutableData::dataWithCapacity(8);
  data->appendText("abcd");
  data->replaceBytesInRange({1, 2}, std::span(reinterpret_cast<const std::uint8_t*>("XYZ"), 3));
  EXPECT_EQ(data->text(), "aXYZd");
  data->replaceBytesInRange({1, 3}, {});
  EXPECT_EQ(data->text(), "ad");
  data->appendData(*data);
  EXPECT_EQ(data->text(), "adad");
  EXPECT_EQ(nameOfWhatIsRaised([&] { data->replaceBytesInRange({4, 1}, {}); }), "NSRangeException");
}

TEST(NSMutableData, NewBytesAreZero) {
  auto data = NSMutableData::dataWithLength(1);
  data->setLength(2);
  EXPECT_EQ(data->text(), std::string_view("\0\0", 2));
  data->mutableBytes()[0] = 'x';
  EXPECT_EQ(data->text(), std::string_view("x\0", 2));
}

}  // namespace
}  // namespace norvik
