#include <gtest/gtest.h>

#include <string>

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
    NSDateFormatterStyle style;
    const char *date, *time, *between;
  } styles[] = {
      {NSDateFormatterNoStyle, "", "", ""},
      {NSDateFormatterShortStyle, "01/07/2021", "13:14", ", "},
      {NSDateFormatterMediumStyle, "1 Jul 2021", "13:14:15", ", "},
      {NSDateFormatterLongStyle, "1 July 2021", "13:14:15 UTC", " at "},
      {NSDateFormatterFullStyle, "Thursday, 1 July 2021", "13:14:15 Coordinated Universal Time", " at "},
  };
  for (const auto& date : styles) {
    for (const auto& time : styles) {
      const bool both = date.style != NSDateFormatterNoStyle && time.style != NSDateFormatterNoStyle;
      EXPECT_EQ(NKUtcDateFormatter::localizedStringFromDate("2021-07-01 13:14:15"_date, date.style, time.style),
                std::string(date.date) + (both ? date.between : "") + time.time);
    }
  }
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
