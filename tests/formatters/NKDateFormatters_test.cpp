#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSCalendar+Norvik.h"
#include "NorvikCore/Categories/NSDateFormatter+Norvik.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/Categories/NSTimeZone+Norvik.h"
#include "NorvikCore/formatters/NKUkDateFormatter.h"
#include "NorvikCore/formatters/NKUtcDateFormatter.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

TEST(NSDateFormatterNorvik, HeaderExample) {
  auto formatter = make<NKUkDateFormatter>();
  EXPECT_EQ(nk_stringFromDate(*formatter, "2021-07-01"_date, "dd/MM/yyyy HH:mm"), "01/07/2021 01:00");
}

TEST(NKUtcDateFormatter, HeaderExample) {
  auto formatter = make<NKUtcDateFormatter>();
  formatter->setDateFormat("dd/MM/yyyy HH:mm");
  EXPECT_EQ(formatter->stringFromDate("2021-07-01"_date), "01/07/2021 00:00");
  EXPECT_EQ(
      NKUtcDateFormatter::localizedStringFromDate("2021-07-01"_date, NSDateFormatterFullStyle, NSDateFormatterNoStyle),
      "Thursday, 1 July 2021");
}

TEST(NKUtcDateFormatter, HasTheDefaultCalendarLocaleAndTimeZone) {
  const auto formatter = make<NKUtcDateFormatter>();
  EXPECT_EQ(formatter->calendar(), nk_defaultCalendar());
  EXPECT_EQ(formatter->locale(), nk_defaultLocale());
  EXPECT_EQ(formatter->timeZone(), nk_defaultTimeZone());
  EXPECT_EQ(formatter->classObject().name(), "NKUtcDateFormatter");
  EXPECT_TRUE(formatter->isKindOfClass(NSDateFormatter::staticClass()));
}

TEST(NKUtcDateFormatter, WritesEveryPairOfStyles) {
  const struct {
    NSDateFormatterStyle date, time;
    const char* expected;
  } rows[] = {
      {NSDateFormatterNoStyle, NSDateFormatterNoStyle, ""},
      {NSDateFormatterShortStyle, NSDateFormatterNoStyle, "01/07/2021"},
      {NSDateFormatterMediumStyle, NSDateFormatterShortStyle, "1 Jul 2021, 13:14"},
      {NSDateFormatterLongStyle, NSDateFormatterMediumStyle, "1 July 2021 at 13:14:15"},
      {NSDateFormatterNoStyle, NSDateFormatterLongStyle, "13:14:15 UTC"},
      {NSDateFormatterNoStyle, NSDateFormatterFullStyle, "13:14:15 Coordinated Universal Time"},
      {NSDateFormatterShortStyle, NSDateFormatterNoStyle, "01/07/2021"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(NKUtcDateFormatter::localizedStringFromDate("2021-07-01 13:14:15"_date, row.date, row.time),
              row.expected);
}

TEST(NKUkDateFormatter, HeaderExample) {
  auto formatter = make<NKUkDateFormatter>();
  formatter->setDateFormat("dd/MM/yyyy HH:mm");
  EXPECT_EQ(formatter->stringFromDate("2021-07-01"_date), "01/07/2021 01:00");
}

TEST(NKUkDateFormatter, HasTheBritishCalendarLocaleAndTimeZone) {
  const auto formatter = make<NKUkDateFormatter>();
  EXPECT_EQ(formatter->calendar(), nk_ukCalendar());
  EXPECT_EQ(formatter->locale(), nk_ukLocale());
  EXPECT_EQ(formatter->timeZone(), nk_ukTimeZone());
}

}  // namespace
}  // namespace norvik
