#include "NorvikCore/platform/archives/NSArchiver.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/ThroughArchivers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace norvik {
namespace {

using norvik::test::throughArchiver;
using norvik::test::throughBothArchivers;

/// Encodes its values without keys, in order.
class SlipCodedInOrder : public NSObject, public NSCoding {
  NK_OBJECT(SlipCodedInOrder, NSObject)
  NK_CODING
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(Ref<NSObject>, next, setNext)
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeValue(grossPay());
    coder.encodeObject(next());
    coder.encodeValue(true);
    coder.encodeValue("weekly");
  }
  bool initWithCoder(NSCoder& coder) override {
    grossPay_ = coder.decodeValue<Decimal>();
    next_ = coder.decodeValue<Ref<NSObject>>();
    isPaid = coder.decodeValue<bool>();
    period = coder.decodeValue<NSString>();
    return true;
  }
  bool isPaid = false;
  NSString period;
};

/// Encodes its values with keys only, and decodes them in another order.
class SlipCodedByKeys : public NSObject, public NSCoding {
  NK_OBJECT(SlipCodedByKeys, NSObject)
  NK_CODING
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(Ref<NSObject>, next, setNext)
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeObject(grossPay(), "grossPay");
    coder.encodeObject(next(), "next");
    coder.encodeInteger(7, "unread");
  }
  bool initWithCoder(NSCoder& coder) override {
    next_ = coder.decode<Ref<NSObject>>("next");
    grossPay_ = coder.decode<Decimal>("grossPay");
    return !coder.containsValueForKey("none") && coder.decodeDoubleForKey("none") == 0;
  }
};

/// Adds values without keys to its superclass's keys.
class SlipCodedBothWays : public SlipCodedByKeys {
  NK_OBJECT(SlipCodedBothWays, SlipCodedByKeys)
  NK_CODING
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeValue(1);
    SlipCodedByKeys::encodeWithCoder(coder);
    coder.encodeValue(2);
  }
  bool initWithCoder(NSCoder& coder) override {
    if (!SlipCodedByKeys::initWithCoder(coder)) return false;
    first = coder.decodeValue<int>();
    second = coder.decodeValue<int>();
    return true;
  }
  int first = 0, second = 0;
};

/// Immutable, so that it is decoded as a complete object.
class CodedWhole : public NSObject, public NSCoding {
  NK_OBJECT(CodedWhole, NSObject)
  NK_DECODED_BY(payCodeWithCoder)
  explicit CodedWhole(NSString wanted) : text(std::move(wanted)) {}
  void encodeWithCoder(NSCoder& coder) const override { coder.encodeObject(text, "text"); }
  static Ref<CodedWhole> payCodeWithCoder(NSCoder& coder) {
    const auto text = coder.decode<NSString>("text");
    return text.empty() ? nullptr : make<CodedWhole>(text);
  }
  const NSString text;
};

class NotArchived : public NSObject {
  NK_OBJECT(NotArchived, NSObject)
};

template <class Slip>
Ref<Slip> slip(const Decimal& pay, Ref<NSObject> next = nullptr) {
  auto made = make<Slip>();
  made->setGrossPay(pay);
  made->setNext(std::move(next));
  return made;
}

TEST(NSArchiver, HeaderExample) {
  const auto payslips = NSArray::arrayWithObjects(slip<SlipCodedInOrder>(10), slip<SlipCodedInOrder>(20));
  auto archiver = make<NSArchiver>();
  archiver->encodeObject(payslips);
  archiver->encodeValue(2);
  auto unarchiver = make<NSUnarchiver>(*archiver->archiverData());
  EXPECT_EQ(unarchiver->decodeObject().object<NSArray>()->valueForKeyPath("@sum.grossPay"), Value(30));
  EXPECT_FALSE(unarchiver->isAtEnd());
  EXPECT_EQ(unarchiver->decodeValue<int>(), 2);
  EXPECT_TRUE(unarchiver->isAtEnd());
}

TEST(NSArchiver, EveryKindOfValueComesBackIdentical) {
  const Value rows[] = {Value(),
                        Value::null(),
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
                        5.00_dec,
                        -0.0000001_dec,
                        Decimal::maximumDecimalNumber(),
                        Date::fromReferenceSeconds(-63113904000.25)};
  for (const Value& value : rows) EXPECT_TRUE(throughArchiver(value).isIdenticalTo(value)) << value;
  EXPECT_TRUE(std::isnan(throughArchiver(std::nan("")).as<double>()));
  EXPECT_TRUE(throughArchiver(Decimal::notANumber()).decimal()->isNaN());
}

TEST(NSArchiver, TextsComeBackLoneHalvesIncluded) {
  const NSString smile = NSString::fromCodePoint(0x1F600);
  for (const NSString& text : {NSString(), NSString("pay"), NSString("Zo\u00EB"), smile, smile.substringToIndex(1),
                               NSString::fromBytes("file\xff"), NSString(std::string_view("a\0b", 3))}) {
    EXPECT_EQ(throughArchiver(text), Value(text));
    EXPECT_EQ(throughArchiver(NSArray::arrayWithObjects(text, text)), Value(NSArray::arrayWithObjects(text, text)));
  }
}

TEST(NSArchiver, CollectionsComeBackWithTheirKindAndOrder) {
  const struct {
    Value collection;
    const char* className;
  } rows[] = {
      {NSArray::arrayWith({1, "a", Value::null(), "a"}), "NSArray"},
      {NSMutableArray::arrayWith({1, 2}), "NSMutableArray"},
      {NSSet::setWith({3, 1, 2}), "NSSet"},
      {NSMutableSet::setWith({3, 1}), "NSMutableSet"},
      {NSDictionary::dictionaryWith({{"z", 1}, {"a", NSArray::array()}, {5, 2}}), "NSDictionary"},
      {NSMutableDictionary::dictionaryWith({{"b", 1}}), "NSMutableDictionary"},
      {NSData::dataWithText(std::string_view("\0pay", 4)), "NSData"},
      {NSMutableData::dataWithLength(3), "NSMutableData"},
      {NSArray::array(), "NSArray"},
  };
  for (const auto& row : rows) {
    const Value back = throughArchiver(row.collection);
    EXPECT_EQ(back, row.collection);
    EXPECT_EQ(back.description(), row.collection.description());
    EXPECT_EQ(back.classObject().name(), row.className);
  }
}

TEST(NSArchiver, ObjectsWithoutKeysComeBackFromBothArchivers) {
  for (const auto archived : throughBothArchivers) {
    const Value back = archived(slip<SlipCodedInOrder>(12.50_dec, slip<SlipCodedInOrder>(1)));
    auto* same = back.object<SlipCodedInOrder>();
    ASSERT_TRUE(same);
    EXPECT_EQ(same->grossPay().stringValue(), "12.50");
    EXPECT_EQ(same->valueForKeyPath("next.grossPay"), Value(1));
    EXPECT_TRUE(same->isPaid);
    EXPECT_EQ(same->period, "weekly");
  }
}

TEST(NSArchiver, ObjectsThatOnlyKnowKeysComeBackInWhateverOrderTheyDecodeThem) {
  const Value back = throughArchiver(slip<SlipCodedByKeys>(12.50_dec, slip<SlipCodedByKeys>(1)));
  auto* same = back.object<SlipCodedByKeys>();
  ASSERT_TRUE(same);
  EXPECT_EQ(same->grossPay().stringValue(), "12.50");
  EXPECT_EQ(same->valueForKeyPath("next.grossPay"), Value(1));
}

TEST(NSArchiver, ValuesWithAndWithoutKeysMixInOneObject) {
  for (const auto archived : throughBothArchivers) {
    const Value back = archived(slip<SlipCodedBothWays>(3));
    auto* same = back.object<SlipCodedBothWays>();
    ASSERT_TRUE(same);
    EXPECT_EQ(same->grossPay(), 3);
    EXPECT_EQ(same->first, 1);
    EXPECT_EQ(same->second, 2);
  }
}

TEST(NSArchiver, ObjectsThatNeverChangeAreMadeWhole) {
  for (const auto archived : throughBothArchivers) {
    const auto code = make<CodedWhole>("1257L");
    const Value back = archived(NSArray::arrayWithObjects(code, code));
    const auto& both = *back.object<NSArray>();
    EXPECT_EQ(both[0].object<CodedWhole>()->text, "1257L");
    EXPECT_EQ(both[0].object(), both[1].object());
    EXPECT_TRUE(archived(make<CodedWhole>("")).isAbsent());
  }
}

TEST(NSArchiver, AnObjectMetTwiceComesBackOnce) {
  const auto shared = slip<SlipCodedInOrder>(1);
  const Value back = throughArchiver(NSArray::arrayWithObjects(shared, slip<SlipCodedInOrder>(1), shared));
  const auto& array = *back.object<NSArray>();
  EXPECT_EQ(array[0].object(), array[2].object());
  EXPECT_NE(array[0].object(), array[1].object());
}

TEST(NSArchiver, ObjectsAreSharedAcrossSeveralRoots) {
  const auto shared = slip<SlipCodedByKeys>(1);
  auto archiver = make<NSArchiver>();
  archiver->encodeObject(shared);
  archiver->encodeObject(NSArray::arrayWithObjects(shared));
  auto unarchiver = make<NSUnarchiver>(*archiver->archiverData());
  const Value first = unarchiver->decodeObject(), second = unarchiver->decodeObject();
  EXPECT_EQ(second.object<NSArray>()->firstObject().object(), first.object());
}

TEST(NSArchiver, ObjectsThatHoldOneAnotherInACircleComeBackSo) {
  const auto first = slip<SlipCodedInOrder>(1), second = slip<SlipCodedInOrder>(2, first);
  first->setNext(second);
  const Value back = throughArchiver(first);
  auto* one = back.object<SlipCodedInOrder>();
  auto* two = dynamic_cast<SlipCodedInOrder*>(one->next().get());
  ASSERT_TRUE(two);
  EXPECT_EQ(two->grossPay(), 2);
  EXPECT_EQ(two->next().get(), one);
  first->setNext(nullptr);
  one->setNext(nullptr);
}

TEST(NSArchiver, AnArrayThatHoldsItselfComesBackSo) {
  auto array = NSMutableArray::array();
  array->addObject(array);
  const Value back = throughArchiver(array);
  auto* same = back.object<NSMutableArray>();
  EXPECT_EQ(same->firstObject().object(), same);
  array->removeAllObjects();
  same->removeAllObjects();
}

TEST(NSArchiver, EqualContentGivesEqualBytes) {
  const auto archive = [] {
    return NSArchiver::archivedDataWithRootObject(
        NSArray::arrayWithObjects(slip<SlipCodedByKeys>(1), "a", "a", slip<SlipCodedInOrder>(2)));
  };
  EXPECT_TRUE(archive()->isEqualToData(*archive()));
}

TEST(NSArchiver, TheBytesAreAsDocumented) {
  EXPECT_EQ(NSArchiver::archivedDataWithRootObject(NSArray::arrayWith({"ab", -1, true, "ab"}))->text(),
            std::string_view("NKSEQU1\n"
                             "\x09\x00\x01\x04"  // a new object: an array of four elements
                             "\x08\x00\x02"
                             "ab"            // a new text
                             "\x04\x01\x03"  // -1, true
                             "\x08\x01",
                             22));  // text 1 again
  EXPECT_EQ(NSArchiver::archivedDataWithRootObject(make<CodedWhole>("L"))->text(),
            std::string_view("NKSEQU1\n"
                             "\x09\x00\x00\x00\x0a"
                             "CodedWhole"        // a new object of a class
                             "\x0a\x00\x04text"  // a key
                             "\x08\x00\x01L\x0b",
                             35));  // its value, the end
}

TEST(NSArchiver, WhatCannotBeEncodedRaisesAndLeavesNoArchive) {
  EXPECT_RAISES((void)throughArchiver(make<NotArchived>()), "NSInvalidArchiveOperationException");
  auto archiver = make<NSArchiver>();
  archiver->encodeInteger(1, "a");
  EXPECT_RAISES(archiver->encodeInteger(1, "a"), "NSInvalidArchiveOperationException");
  EXPECT_TRUE(archiver->archiverData());
  EXPECT_RAISES(archiver->encodeObject(NSArray::arrayWithObjects(make<NotArchived>())),
                "NSInvalidArchiveOperationException");
  EXPECT_RAISES((void)archiver->archiverData(), "NSInvalidArchiveOperationException");
}

TEST(NSArchiver, OnlyWrites) {
  auto archiver = make<NSArchiver>();
  EXPECT_RAISES((void)archiver->decodeObject(), "NSInvalidArchiveOperationException");
  EXPECT_RAISES((void)archiver->decodeObjectForKey("a"), "NSInvalidArchiveOperationException");
  EXPECT_RAISES((void)archiver->containsValueForKey("a"), "NSInvalidArchiveOperationException");
}

TEST(NSArchiver, NestingIsBoundedOnBothSides) {
  Ref<SlipCodedInOrder> chain = slip<SlipCodedInOrder>(1);
  for (int i = 1; i < 512; ++i) chain = slip<SlipCodedInOrder>(1, chain);
  EXPECT_TRUE(throughArchiver(chain).isObject());
  EXPECT_RAISES((void)throughArchiver(slip<SlipCodedInOrder>(1, chain)), "NSInvalidArchiveOperationException");
}

}  // namespace
}  // namespace norvik
