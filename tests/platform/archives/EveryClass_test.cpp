// Passes objects of every class of the library through both archivers: each is decoded again or refused by name.
#include "NorvikCore/formatters/NKDecimalFormatter.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/formatters/NKPercentageTermDecimalNumberFormatter.h"
#include "NorvikCore/formatters/NKPlainTextFormatter.h"
#include "NorvikCore/formatters/NKUKSortCodeFormatter.h"
#include "NorvikCore/formatters/NKUkDateFormatter.h"
#include "NorvikCore/formatters/NKUtcDateFormatter.h"
#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/foundation/NSFileHandle.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/foundation/NSProcessInfo.h"
#include "NorvikCore/platform/foundation/NSThread.h"
#include "NorvikCore/platform/foundation/NSURL.h"
#include "NorvikCore/platform/foundation/NSUUID.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/ThroughArchivers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace norvik;
using norvik::test::throughBothArchivers;

namespace {

Ref<NSMutableAttributedString> styledText() {
  auto text = NSMutableAttributedString::attributedStringWithString("1,234.50 net");
  text->addAttribute(NSForegroundColorAttributeName, NSColor::redColor(), {0, 5});
  text->addAttribute(NSFontAttributeName, NSFont::boldSystemFontOfSize(9), {3, 5});
  return text;
}

Ref<NSDateComponents> someComponents() {
  auto components = make<NSDateComponents>();
  components->setYear(2021);
  components->setWeekday(-3);
  components->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
  return components;
}

Ref<NSCalendar> someCalendar(const NSString& identifier) {
  auto calendar = NSCalendar::calendarWithIdentifier(identifier);
  calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  calendar->setTimeZone(NSTimeZone::timeZoneWithName("America/New_York"));
  calendar->setFirstWeekday(5);
  return calendar;
}

struct Coded {
  const char* className;
  Value sample;
};

/// Values that are equal if their contents are equal.
std::vector<Coded> codedValues() {
  const NSString half = NSString::fromCodePoint(0x1F600).substringToIndex(1);
  return {
      {"NSNull", Value::null()},
      {"NSNumber", true},
      {"NSNumber", std::numeric_limits<std::int64_t>::min()},
      {"NSNumber", 0.1},
      {"NSNumber", NSNumber(7)},
      {"NSDecimalNumber", std::numeric_limits<std::uint64_t>::max()},
      {"NSDecimalNumber", 5.00_dec},
      {"NSDate", "2021-05-28"_date},
      {"NSString", "Zo\u00EB"},
      {"NSString", "a" + half},
      {"NSArray", NSArray::arrayWith({1, half, Value::null()})},
      {"NSMutableArray", NSMutableArray::arrayWith({NSArray::array(), 2})},
      {"NSSet", NSSet::setWith({3, 1, 2})},
      {"NSMutableSet", NSMutableSet::setWith({"c", "a"})},
      {"NSDictionary", NSDictionary::dictionaryWith({{"z", 1}, {5, "2021-05-28"_date}})},
      {"NSMutableDictionary", NSMutableDictionary::dictionaryWith({{"b", NSSet::set()}})},
      {"NSData", NSData::dataWithText(std::string_view("\0pay", 4))},
      {"NSMutableData", NSMutableData::dataWithLength(3)},
      {"NSError", NSError::errorWithDomain("Payroll", -7, NSDictionary::dictionaryWith({{"a", 1}}))},
      {"NSError",
       NSError::errorWithDomain(
           "", 0, NSDictionary::dictionaryWith({{NSUnderlyingErrorKey, NSError::posixError(2, "open", "/pay")}}))},
      {"NSAttributedString", NSAttributedString::attributedStringWithString("")},
      {"NSAttributedString", styledText()->attributedSubstringFromRange({1, 9})},
      {"NSMutableAttributedString", styledText()},
      {"NSUUID", NSUUID::initWithUUIDString("3F2504E0-4F89-41D3-9A0C-0305E82C3301")},
      {"NSURL", NSURL::fileURLWithPath("/home/pat/April \u00A3.csv", false)},
      {"NSURL", NSURL::fileURLWithPath("/home/pat", true)},
      {"NSLocale", NSLocale::localeWithLocaleIdentifier("de_DE@collation=phonebook")},
      {"NSLocale", NSLocale::systemLocale()},
      {"NSTimeZone", NSTimeZone::timeZoneWithName("Europe/London")},
      {"NSTimeZone", NSTimeZone::timeZoneForSecondsFromGMT(-5 * 3600 - 1800)},
      {"NSTimeZone", NSTimeZone::timeZoneForSecondsFromGMT(0)},
      {"NSTimeZone", NSTimeZone::systemTimeZone()},
      {"NSDateComponents", make<NSDateComponents>()},
      {"NSDateComponents", someComponents()},
      {"NSCalendar", someCalendar(NSGregorianCalendar)},
      {"NSCalendar", someCalendar(NSISO8601Calendar)},
      {"NSCalendar", NSCalendar::calendarWithIdentifier(NSGregorianCalendar)},
      {"NSColor", NSColor::colorWithRed(0.1, 0.2, 0.3, 0.4)},
      {"MRKTaggedString", MRKTaggedString::stringWithString("<b>Zo\u00EB" + half)},
      {"NSFont", make<NSFont>("DejaVu Sans", 11.5, true, false)},
  };
}

template <class Formatter>
Ref<Formatter> numberFormatter() {
  auto formatter = make<Formatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("de_DE"));
  return formatter;
}

Ref<NSNumberFormatter> patternFormatter() {
  auto formatter = numberFormatter<NSNumberFormatter>();
  formatter->setFormat("#,##0.00;(#,##0.00)");
  return formatter;
}

template <class Formatter>
Ref<Formatter> dateFormatter() {
  auto formatter = make<Formatter>();
  formatter->setDateFormat("EEE yyyy-MM-dd HH:mm");
  return formatter;
}

Ref<NSDateFormatter> zonedFormatter() {
  auto formatter = dateFormatter<NSDateFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("fr_FR"));
  formatter->setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(3600));
  return formatter;
}

/// Formatters are compared by their results: the text for -1234.5, or for a date.
struct CodedFormatter {
  const char* className;
  Ref<NSFormatter> sample;
  Value value;
  const char* expected;
};

std::vector<CodedFormatter> codedFormatters() {
  const Date date = "2021-07-01"_date;
  return {
      {"NSNumberFormatter", patternFormatter(), -1234.5_dec, "(1.234,50)"},
      {"NKDecimalFormatter", numberFormatter<NKDecimalFormatter>(), -1234.5_dec, "-1.234,50"},
      {"NKMonetaryTermDecimalNumberFormatter", numberFormatter<NKMonetaryTermDecimalNumberFormatter>(), -1234.5_dec,
       "-1.234,50"},
      {"NKPercentageTermDecimalNumberFormatter", numberFormatter<NKPercentageTermDecimalNumberFormatter>(), -1234.5_dec,
       "-1.234,5"},
      {"NKPlainTextFormatter", make<NKPlainTextFormatter>(), "Zo\u00EB", "Zo\u00EB"},
      {"NKUKSortCodeFormatter", make<NKUKSortCodeFormatter>(), "123456", "12-34-56"},
      {"NSDateFormatter", zonedFormatter(), date, "jeu. 2021-07-01 01:00"},
      {"NKUkDateFormatter", dateFormatter<NKUkDateFormatter>(), date, "Thu 2021-07-01 01:00"},
      {"NKUtcDateFormatter", dateFormatter<NKUtcDateFormatter>(), date, "Thu 2021-07-01 00:00"},
  };
}

/// True if the class declares how its objects are decoded.
bool isDecodable(const Class& theClass) {
  return std::ranges::any_of(theClass.classMethods(), [](const Method& method) {
    return method.selector == "nk_makeForDecoding" || method.selector == "nk_decodeWithCoder:";
  });
}

NSString reasonOfRefusal(Ref<NSData> (*archive)(const Value&), const Value& value) {
  try {
    (void)archive(value);
  } catch (const NSException& e) {
    return e.name() == NSInvalidArchiveOperationException ? e.reason() : e.description();
  }
  return "";
}

}  // namespace

TEST(EveryClass, ValuesAndObjectsComeBackEqualAndOfTheirClass) {
  for (const Coded& row : codedValues()) {
    for (const auto archived : throughBothArchivers) {
      const Value back = archived(row.sample);
      ASSERT_FALSE(back.isAbsent()) << row.className;
      EXPECT_EQ(back, row.sample) << row.className;
      EXPECT_EQ(back.classObject().name(), row.className);
      EXPECT_EQ(back.classObject(), row.sample.classObject());
    }
  }
}

TEST(EveryClass, FormattersComeBackWithTheirSettings) {
  for (const CodedFormatter& row : codedFormatters()) {
    EXPECT_EQ(row.sample->stringForObjectValue(row.value), row.expected) << row.className;
    for (const auto archived : throughBothArchivers) {
      const Value back = archived(row.sample);
      ASSERT_TRUE(back.object<NSFormatter>()) << row.className;
      EXPECT_EQ(back.classObject().name(), row.className);
      EXPECT_EQ(back.object<NSFormatter>()->stringForObjectValue(row.value), row.expected) << row.className;
    }
  }
}

TEST(EveryClass, NoClassThatCanBeDecodedIsMissingHere) {
  std::vector<NSString> shown;
  for (const Coded& row : codedValues()) shown.emplace_back(row.className);
  for (const CodedFormatter& row : codedFormatters()) shown.emplace_back(row.className);
  for (const Class* theClass : Class::all()) {
    if (!isDecodable(*theClass)) continue;
    EXPECT_TRUE(std::ranges::count(shown, theClass->name()) > 0)
        << theClass->name() << " declares how it is decoded: it needs a row in one of the tables above";
  }
}

TEST(EveryClass, WhatIsOfThisProcessOrHasNoContentIsRefusedByName) {
  const Block<void()> closure = [] {};
  const struct {
    const char* className;
    Value sample;
  } rows[] = {
      {"NSNotification", NSNotification::notificationWithName("Paid")},
      {"NSFileHandle", NSFileHandle::fileHandleForReadingAtPath("/dev/urandom")},
      {"NSFileManager", ref(NSFileManager::defaultManager())},
      {"NSNotificationCenter", ref(NSNotificationCenter::defaultCenter())},
      {"NSProcessInfo", ref(NSProcessInfo::processInfo())},
      {"NSThread", NSThread::currentThread()},
      {"NSKeyedArchiver", make<NSKeyedArchiver>()},
      {"NSArchiver", make<NSArchiver>()},
      {"NSBlock", closure},
      {"DDLogMessage", DDLogMessage::initWithLogMsg("paid", 3, 2, 0, "pay.cpp", "pay:", 7, Value(), 0)},
  };
  for (const auto& row : rows) {
    const NSString expected =
        "an object of the class " + NSString(row.className) + ", which does not implement NSCoding";
    EXPECT_EQ(reasonOfRefusal(&NSArchiver::archivedDataWithRootObject, row.sample), expected);
    EXPECT_EQ(reasonOfRefusal(&NSKeyedArchiver::archivedDataWithRootObject, row.sample), expected);
  }
}

TEST(EveryClass, RangesAreCodedAsAValueOfTheirObject) {
  auto archiver = make<NSArchiver>();
  for (const NSRange range : {NSRange{6, 5}, NSRange{NSNotFound, 0}, NSRange{0, ~NSUInteger{0}}}) {
    archiver->encodeValue(range);
  }
  auto unarchiver = make<NSUnarchiver>(*archiver->archiverData());
  EXPECT_EQ(unarchiver->decodeValue<NSRange>(), (NSRange{6, 5}));
  EXPECT_EQ(unarchiver->decodeValue<NSRange>(), (NSRange{NSNotFound, 0}));
  EXPECT_EQ(unarchiver->decodeValue<NSRange>(), (NSRange{0, ~NSUInteger{0}}));
}
