#include "NorvikCore/platform/foundation/internal/PropertyList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/foundation/NSURL.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/LeaksAllowed.h"

namespace norvik::detail {
namespace {

Value stored(const Value& value) { return decodePropertyList(encodePropertyList(propertyListCopy(value, "it"))); }

Value inArrays(int depth) {
  Value value = NSArray::array();
  for (int i = 1; i < depth; ++i) value = NSArray::arrayWithObjects(value);
  return value;
}

std::string reasonFor(const Value& value) {
  try {
    (void)propertyListCopy(value, "the preference");
  } catch (const NSException& e) {
    EXPECT_EQ(e.name(), NSInvalidArgumentException);
    return e.reason().utf8();
  }
  return "";
}

TEST(PropertyList, NumbersKeepTheirKindAndEveryDigit) {
  const Value rows[] = {
      true,
      false,
      0,
      -1,
      std::numeric_limits<std::int64_t>::min(),
      std::numeric_limits<std::int64_t>::max(),
      std::numeric_limits<std::uint64_t>::max(),
      0.1,
      -0.0,
      std::numeric_limits<double>::infinity(),
      -std::numeric_limits<double>::infinity(),
      std::numeric_limits<double>::denorm_min(),
      5_dec,
      5.00_dec,
      -0.0135_dec,
      99999999999999999999999999999999999999_dec,
      Decimal::notANumber(),
      NSDate::distantFuture(),
  };
  for (const Value& row : rows) {
    const Value back = stored(row);
    EXPECT_EQ(back.kind(), row.kind()) << row;
    EXPECT_TRUE(back.isIdenticalTo(row)) << row << " became " << back;
  }
}

TEST(PropertyList, ADoubleThatIsNotANumberStaysOne) {
  const Value back = stored(std::numeric_limits<double>::quiet_NaN());
  ASSERT_EQ(back.kind(), Value::Kind::Double);
  EXPECT_TRUE(std::isnan(back.as<double>()));
  EXPECT_TRUE(std::signbit(stored(-0.0).as<double>()));
}

TEST(PropertyList, TextsKeepEveryUnit) {
  const NSString rows[] = {"",
                           "pay",
                           "\u00A3 \U0001F4B7",
                           "a\0b"_ns,
                           NSString::fromUtf16(u"\xD800 alone"),
                           NSString::fromUtf16(u"\xDC00\xD800"),
                           NSString::fromBytes("\xFF\xFE")};
  for (const NSString& row : rows) EXPECT_EQ(*stored(row).string(), row);
}

TEST(PropertyList, CollectionsAndDataKeepTheirContent) {
  const Value value =
      NSDictionary::dictionaryWith({{"columns", NSArray::arrayWithObjects("Name", 12, NSArray::array())},
                                    {"widths", NSDictionary::dictionaryWith({{"Name", 80.5}, {"Pay", 12.50_dec}})},
                                    {"", NSData::dataWithText("\x00\xFF")}});
  EXPECT_EQ(stored(value), value);
}

TEST(PropertyList, ACopyDoesNotChangeWithWhatItWasMadeOf) {
  const auto inner = NSMutableArray::array();
  inner->addObject(1);
  const auto data = NSMutableData::dataWithLength(1);
  const auto outer = NSMutableDictionary::dictionaryWith({{"list", inner}, {"data", data}});
  const Value copy = propertyListCopy(outer, "it");
  inner->addObject(2);
  data->setLength(2);
  outer->setObject(3, "more");
  EXPECT_EQ(copy, Value(NSDictionary::dictionaryWith(
                      {{"list", NSArray::arrayWithObjects(1)}, {"data", NSMutableData::dataWithLength(1)}})));
  EXPECT_EQ(copy.object<NSMutableDictionary>(), nullptr);
  EXPECT_EQ(copy.object<NSDictionary>()->objectForKey("list").object<NSMutableArray>(), nullptr);
  EXPECT_EQ(copy.object<NSDictionary>()->objectForKey("data").object<NSMutableData>(), nullptr);
}

TEST(PropertyList, AnythingElseIsRefusedWithItsReason) {
  EXPECT_EQ(reasonFor(Value()), "the preference cannot hold an absent value");
  EXPECT_EQ(reasonFor(Value::null()), "the preference cannot hold the null marker");
  EXPECT_EQ(reasonFor(NSArray::arrayWithObjects(Value::null())), "the preference cannot hold the null marker");
  EXPECT_EQ(reasonFor(NSURL::fileURLWithPath("/", true)), "the preference cannot hold an object of the class NSURL");
  EXPECT_EQ(reasonFor(NSArray::arrayWithObjects(NSSet::setWithObjects(1))),
            "the preference cannot hold an object of the class NSSet");
  EXPECT_EQ(reasonFor(NSDictionary::dictionaryWith({{1, "one"}})),
            "the preference cannot hold a dictionary with a key that is not a text");
}

TEST(PropertyList, ACollectionThatHoldsItselfIsRefused) {
  const norvik::test::LeaksAllowed rings;
  const auto ring = NSMutableArray::array();
  ring->addObject(NSArray::arrayWithObjects(ring));
  EXPECT_EQ(reasonFor(ring), "the preference cannot hold a collection that holds itself");
  ring->removeAllObjects();
}

TEST(PropertyList, WhatIsHeldTwiceIsKeptTwice) {
  const auto twice = NSArray::arrayWithObjects("a");
  EXPECT_EQ(stored(NSArray::arrayWithObjects(twice, twice)), Value(NSArray::arrayWithObjects(twice, twice)));
}

TEST(PropertyList, ManyLevelsThatHoldEachOtherTwiceTakeLittle) {
  Value value = NSArray::arrayWithObjects("a");
  for (int i = 0; i < 100; ++i) value = NSArray::arrayWithObjects(value, value);
  EXPECT_LT(encodePropertyList(propertyListCopy(value, "it")).size(), 2000u);
  (void)decodePropertyList(encodePropertyList(propertyListCopy(value, "it")));
}

TEST(PropertyList, CollectionsMayBe512DeepAndNoDeeper) {
  EXPECT_EQ(stored(inArrays(512)), inArrays(512));
  EXPECT_EQ(reasonFor(inArrays(513)), "the preference cannot hold collections more than 512 levels deep");
}

TEST(PropertyList, BytesThatAreNoPropertyListAreRefused) {
  const std::string whole = encodePropertyList(propertyListCopy(NSArray::arrayWithObjects("a", 1), "it"));
  EXPECT_RAISES((void)decodePropertyList(""), "NSInvalidUnarchiveOperationException");
  EXPECT_RAISES((void)decodePropertyList("pay"), "NSInvalidUnarchiveOperationException");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_RAISES((void)decodePropertyList(whole.substr(0, size)), "NSInvalidUnarchiveOperationException");
  }
  EXPECT_RAISES((void)decodePropertyList(whole + "x"), "NSInvalidUnarchiveOperationException");
}

/// Counts the objects that were created from an archive.
class Decoded : public NSObject, public NSCoding {
  NK_OBJECT(Decoded, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override {
    ++count;
    return true;
  }
  static inline int count = 0;
};

TEST(PropertyList, AnArchiveOfSomethingElseIsRefusedBeforeAnythingIsMadeOfIt) {
  const Value rows[] = {
      make<Decoded>(),
      NSArray::arrayWithObjects(make<Decoded>()),
      NSArray::arrayWithObjects(Value::null()),
      NSMutableArray::array(),
      NSMutableData::data(),
      NSSet::setWithObjects(1),
      NSDictionary::dictionaryWith({{1, "one"}}),
      NSDictionary::dictionaryWith({{NSArray::array(), "one"}}),
      Value(),
  };
  for (const Value& row : rows) {
    const std::string bytes(NSArchiver::archivedDataWithRootObject(row)->text());
    EXPECT_RAISES((void)decodePropertyList(bytes), "NSInvalidUnarchiveOperationException") << row;
  }
  EXPECT_EQ(Decoded::count, 0);
}

TEST(PropertyList, AnArchiveOfARingIsRefused) {
  using namespace std::string_view_literals;
  EXPECT_EQ(decodePropertyList("NKSEQU1\n\x09\x00\x01\x00"sv), Value(NSArray::array()));  // a new, empty array
  EXPECT_RAISES((void)decodePropertyList("NKSEQU1\n\x09\x00\x01\x01\x09\x01"sv),  // an array that contains itself
                "NSInvalidUnarchiveOperationException");
}

}  // namespace
}  // namespace norvik::detail
