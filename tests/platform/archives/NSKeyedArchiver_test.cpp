#include "NorvikCore/platform/archives/NSKeyedArchiver.h"

#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/archives/NSUnarchiver.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace norvik {

namespace pay {
class CodedRow : public NSObject, public NSCoding {
  NK_OBJECT(CodedRow, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};

class CodedCell : public NSObject, public NSCoding {
  NK_OBJECT(CodedCell, NSObject)
  NK_CODING
  NK_CLASS_NAME("pay.CodedCell")
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};
}  // namespace pay

namespace hr {
class CodedRow : public NSObject, public NSCoding {
  NK_OBJECT(CodedRow, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};

class CodedCell : public NSObject, public NSCoding {
  NK_OBJECT(CodedCell, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};

class CodedRo : public NSObject, public NSCoding {
  NK_OBJECT(CodedRo, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};
}  // namespace hr

namespace {

/// NSKeyedArchiver_other_file.cpp has a class with the same name.
class CodedHidden : public NSObject, public NSCoding {
  NK_OBJECT(CodedHidden, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};

class CodedCow : public NSObject, public NSCoding {
  NK_OBJECT(CodedCow, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};

class CodedWithALongerNam : public NSObject, public NSCoding {
  NK_OBJECT(CodedWithALongerNam, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};

class CodedSlip : public NSObject, public NSCoding {
  NK_OBJECT(CodedSlip, NSObject)
  NK_CODING
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(Ref<NSObject>, next, setNext)
  bool init() override {
    initCalls = 1;
    return true;
  }
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeObject(grossPay(), "grossPay");
    coder.encodeObject(next(), "next");
  }
  bool initWithCoder(NSCoder& coder) override {
    grossPay_ = coder.decode<Decimal>("grossPay");
    next_ = coder.decode<Ref<NSObject>>("next");
    return grossPay() >= 0;
  }
  int initCalls = 0;
};

class CodedBonusSlip : public CodedSlip {
  NK_OBJECT(CodedBonusSlip, CodedSlip)
  NK_CODING
  void encodeWithCoder(NSCoder& coder) const override {
    CodedSlip::encodeWithCoder(coder);
    coder.encodeBool(true, "yes");
    coder.encodeInteger(-7, "count");
    coder.encodeDouble(2.5, "rate");
  }
  bool initWithCoder(NSCoder& coder) override {
    if (!CodedSlip::initWithCoder(coder)) return false;
    yes = coder.decodeBoolForKey("yes");
    count = coder.decodeIntegerForKey("count");
    rate = coder.decodeDoubleForKey("rate");
    missing =
        coder.containsValueForKey("none") || coder.decodeBoolForKey("none") || coder.decodeIntegerForKey("none") != 0;
    return true;
  }
  bool yes = false, missing = true;
  std::int64_t count = 0;
  double rate = 0;
};

/// Inherits NSCoding but does not declare NK_CODING itself.
class UnstatedSlip : public CodedSlip {
  NK_OBJECT(UnstatedSlip, CodedSlip)
};

class Plain : public NSObject {
  NK_OBJECT(Plain, NSObject)
};

class TwiceKeyed : public NSObject, public NSCoding {
  NK_OBJECT(TwiceKeyed, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeBool(true, "key");
    coder.encodeBool(true, "key");
  }
  bool initWithCoder(NSCoder&) override { return true; }
};

Value thereAndBack(const Value& value) {
  return NSKeyedUnarchiver::unarchiveObjectWithData(*NSKeyedArchiver::archivedDataWithRootObject(value));
}

Ref<CodedSlip> slip(const Decimal& pay, Ref<NSObject> next = nullptr) {
  auto made = make<CodedSlip>();
  made->setGrossPay(pay);
  made->setNext(std::move(next));
  return made;
}

TEST(NSKeyedArchiver, HeaderExample) {
  const auto payslips = NSArray::arrayWithObjects(slip(10), slip(20));
  auto archiver = make<NSKeyedArchiver>();
  archiver->encodeObject(payslips, "payslips");
  archiver->encodeInteger(2, "version");
  auto unarchiver = make<NSKeyedUnarchiver>(*archiver->encodedData());
  EXPECT_EQ(unarchiver->decodeIntegerForKey("version"), 2);
  EXPECT_EQ(unarchiver->decodeObjectForKey("payslips").object<NSArray>()->valueForKeyPath("@sum.grossPay"), Value(30));
}

TEST(NSKeyedArchiver, EveryKindOfValueComesBackIdentical) {
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
  for (const Value& value : rows) EXPECT_TRUE(thereAndBack(value).isIdenticalTo(value)) << value;
  EXPECT_TRUE(std::isnan(thereAndBack(std::nan("")).as<double>()));
  EXPECT_TRUE(thereAndBack(Decimal::notANumber()).decimal()->isNaN());
}

TEST(NSKeyedArchiver, TextsComeBackLoneHalvesIncluded) {
  const NSString smile = NSString::fromCodePoint(0x1F600);
  for (const NSString& text : {NSString(), NSString("pay"), NSString("Zo\u00EB"), smile, smile.substringToIndex(1),
                               NSString::fromBytes("file\xff"), NSString(std::string_view("a\0b", 3))}) {
    EXPECT_EQ(thereAndBack(text), Value(text));
  }
}

TEST(NSKeyedArchiver, CollectionsComeBackWithTheirKindAndOrder) {
  const struct {
    Value collection;
    const char* className;
  } rows[] = {
      {NSArray::arrayWith({1, "a", Value::null()}), "NSArray"},
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
    const Value back = thereAndBack(row.collection);
    EXPECT_EQ(back, row.collection);
    EXPECT_EQ(back.description(), row.collection.description());
    EXPECT_EQ(back.classObject().name(), row.className);
  }
}

TEST(NSKeyedArchiver, ObjectsComeBackWithoutInit) {
  const Value back = thereAndBack(slip(12.50_dec, slip(1)));
  auto* same = back.object<CodedSlip>();
  ASSERT_TRUE(same);
  EXPECT_EQ(same->grossPay().stringValue(), "12.50");
  EXPECT_EQ(same->initCalls, 0);
  EXPECT_EQ(same->valueForKeyPath("next.grossPay"), Value(1));
}

TEST(NSKeyedArchiver, ASubclassCodesItsOwnAndItsSuperclassesPart) {
  auto bonus = make<CodedBonusSlip>();
  bonus->setGrossPay(3);
  const Value back = thereAndBack(bonus);
  auto* same = back.object<CodedBonusSlip>();
  ASSERT_TRUE(same);
  EXPECT_EQ(same->grossPay(), 3);
  EXPECT_TRUE(same->yes);
  EXPECT_EQ(same->count, -7);
  EXPECT_EQ(same->rate, 2.5);
  EXPECT_FALSE(same->missing);
}

TEST(NSKeyedArchiver, AnObjectMetTwiceComesBackOnce) {
  const auto shared = slip(1);
  const Value back = thereAndBack(NSArray::arrayWithObjects(shared, slip(1), shared));
  const auto& array = *back.object<NSArray>();
  EXPECT_EQ(array[0].object(), array[2].object());
  EXPECT_NE(array[0].object(), array[1].object());
}

TEST(NSKeyedArchiver, ObjectsThatHoldOneAnotherInACircleComeBackSo) {
  const auto first = slip(1), second = slip(2, first);
  first->setNext(second);
  const Value back = thereAndBack(first);
  auto* one = back.object<CodedSlip>();
  auto* two = dynamic_cast<CodedSlip*>(one->next().get());
  ASSERT_TRUE(two);
  EXPECT_EQ(two->grossPay(), 2);
  EXPECT_EQ(two->next().get(), one);
  first->setNext(nullptr);
  one->setNext(nullptr);
}

TEST(NSKeyedArchiver, AnArrayThatHoldsItselfComesBackSo) {
  auto array = NSMutableArray::array();
  array->addObject(array);
  const Value back = thereAndBack(array);
  auto* same = back.object<NSMutableArray>();
  EXPECT_EQ(same->firstObject().object(), same);
  array->removeAllObjects();
  same->removeAllObjects();
}

TEST(NSKeyedArchiver, EqualContentGivesEqualBytes) {
  const auto archive = [] {
    return NSKeyedArchiver::archivedDataWithRootObject(NSArray::arrayWithObjects(slip(1), "a", "a", slip(2)));
  };
  EXPECT_TRUE(archive()->isEqualToData(*archive()));
}

TEST(NSKeyedArchiver, TheBytesAreAsDocumented) {
  EXPECT_EQ(NSKeyedArchiver::archivedDataWithRootObject(NSArray::arrayWith({"ab", -1, true}))->text(),
            std::string_view("NKARCH1\n"
                             "\x02\x04root\x02"
                             "ab"                                // two texts
                             "\x01\x01\x03\x08\x01\x04\x01\x03"  // one array: text 1, integer -1, true
                             "\x01\x00\x09\x00",                 // root is object 0
                             29));
}

TEST(NSKeyedArchiver, WhatCannotBeEncodedRaisesAndLeavesNoArchive) {
  EXPECT_RAISES((void)thereAndBack(make<Plain>()), "NSInvalidArchiveOperationException");
  EXPECT_RAISES((void)thereAndBack(make<UnstatedSlip>()), "NSInvalidArchiveOperationException");
  EXPECT_RAISES((void)thereAndBack(make<TwiceKeyed>()), "NSInvalidArchiveOperationException");
  auto archiver = make<NSKeyedArchiver>();
  archiver->encodeInteger(1, "a");
  EXPECT_RAISES(archiver->encodeInteger(1, "a"), "NSInvalidArchiveOperationException");
  EXPECT_RAISES(archiver->encodeObject(NSArray::arrayWithObjects(make<Plain>()), "b"),
                "NSInvalidArchiveOperationException");
  EXPECT_RAISES((void)archiver->encodedData(), "NSInvalidArchiveOperationException");
  EXPECT_RAISES((void)archiver->decodeObjectForKey("a"), "NSInvalidArchiveOperationException");
}

TEST(NSKeyedArchiver, NestingIsBoundedOnBothSides) {
  Ref<CodedSlip> chain = slip(1);
  for (int i = 1; i < 512; ++i) chain = slip(1, chain);
  EXPECT_TRUE(thereAndBack(chain).isObject());
  EXPECT_RAISES((void)thereAndBack(slip(1, chain)), "NSInvalidArchiveOperationException");
}

/// Expects an exception with this name and this reason.
template <class Work>
void expectRefusal(Work&& work, const char* name, const std::string& reason) {
  try {
    work();
    ADD_FAILURE() << "nothing was raised";
  } catch (const NSException& refusal) {
    EXPECT_EQ(refusal.name(), name);
    EXPECT_NE(refusal.reason().str().find(reason), std::string::npos) << refusal.reason();
  }
}

TEST(NSKeyedArchiver, OfClassesThatShareANameTheCppNameIsWrittenAndRead) {
  for (const Ref<NSObject>& row : {Ref<NSObject>(make<pay::CodedRow>()), Ref<NSObject>(make<hr::CodedRow>())}) {
    const auto data = NSKeyedArchiver::archivedDataWithRootObject(row);
    EXPECT_NE(data->text().find(row->classObject().qualifiedName().view()), std::string_view::npos);
    const Value read = NSKeyedUnarchiver::unarchiveObjectWithData(*data);
    EXPECT_EQ(&read.object()->classObject(), &row->classObject());
    EXPECT_EQ(
        &NSUnarchiver::unarchiveObjectWithData(*NSArchiver::archivedDataWithRootObject(row)).object()->classObject(),
        &row->classObject());
  }
}

TEST(NSKeyedArchiver, ACppNameIsReadAlsoWhereTheNameIsNotSharedAnyMore) {
  std::string bytes(NSKeyedArchiver::archivedDataWithRootObject(make<CodedWithALongerNam>())->text());
  bytes.replace(bytes.find("CodedWithALongerNam"), 19, "norvik::hr::CodedRo");
  const Value read = NSKeyedUnarchiver::unarchiveObjectWithData(*NSData::dataWithText(bytes));
  EXPECT_EQ(&read.object()->classObject(), &hr::CodedRo::staticClass());
}

TEST(NSKeyedArchiver, ASharedNameThatWasWrittenWhereOneClassHadItIsRefusedWithTheClasses) {
  std::string bytes(NSKeyedArchiver::archivedDataWithRootObject(make<CodedCow>())->text());
  bytes.replace(bytes.find("CodedCow"), 8, "CodedRow");
  expectRefusal([&] { (void)NSKeyedUnarchiver::unarchiveObjectWithData(*NSData::dataWithText(bytes)); },
                "NSInvalidUnarchiveOperationException",
                "2 classes are named \"CodedRow\": norvik::hr::CodedRow, norvik::pay::CodedRow; give one of them "
                "another name by NK_CLASS_NAME");
}

TEST(NSKeyedArchiver, ClassesWithoutADistinctNameAreRefused) {
  expectRefusal([] { (void)NSKeyedArchiver::archivedDataWithRootObject(make<CodedHidden>()); },
                "NSInvalidArchiveOperationException",
                "2 classes are named \"norvik::(anonymous namespace)::CodedHidden\"");
}

TEST(NSKeyedArchiver, AnExplicitNameTellsClassesOfOneNameApart) {
  const auto data = NSKeyedArchiver::archivedDataWithRootObject(make<pay::CodedCell>());
  EXPECT_NE(data->text().find("pay.CodedCell"), std::string::npos);
  const Value read = NSKeyedUnarchiver::unarchiveObjectWithData(*data);
  EXPECT_EQ(&read.object()->classObject(), &pay::CodedCell::staticClass());
}

}  // namespace
}  // namespace norvik
