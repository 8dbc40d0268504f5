#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "NorvikCore/formatters/internal/MainThreadFormatters.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

TEST(NSDateNorvikFormatting, HeaderExample) {
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-07-01"_date, "dd/MM/yyyy HH:mm"), "01/07/2021 00:00");
  EXPECT_EQ(nk_ukDateStringWithFormat("2021-07-01"_date, "dd/MM/yyyy HH:mm"), "01/07/2021 01:00");
  EXPECT_EQ(nk_utcDescription("2021-07-01"_date), "2021-07-01 00:00:00 +0000");
}

TEST(NSDateNorvikFormatting, TheWeeksYearAndTheYearDiffer) {
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-01-01"_date, "YYYY"), "2020");
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-01-01"_date, "yyyy"), "2021");
}

TEST(NSDateNorvikFormatting, BritishTimeIsGmtInWinterAndBstInSummer) {
  EXPECT_EQ(nk_ukDateStringWithFormat("2021-01-01 12:00:00"_date, "d MMM yyyy HH:mm zzz"), "1 Jan 2021 12:00 GMT");
  EXPECT_EQ(nk_ukDateStringWithFormat("2021-07-01 12:00:00"_date, "d MMM yyyy HH:mm zzz"), "1 Jul 2021 13:00 BST");
}

TEST(NSDateNorvikFormatting, ABackgroundThreadLeavesAnEmptyCacheEmpty) {
  detail::MainThreadFormatter<NKUtcDateFormatter> cache;
  std::thread([&] {
    for (int i = 0; i < 2; ++i) (void)cache.use([](NKUtcDateFormatter&) { return 0; });
  }).join();
  EXPECT_EQ(cache.made(), 2u);
  EXPECT_FALSE(cache.isFilled());
  (void)cache.use([](NKUtcDateFormatter&) { return 0; });
  EXPECT_TRUE(cache.isFilled());
}

// A call on a new thread makes a new formatter, with the settings of that moment.
TEST(NSDateNorvikFormatting, LocalTimeIsTheUsers) {
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("Asia/Tokyo"));
  NSString text;
  std::thread([&] { text = nk_localDateStringWithFormat("2021-07-01"_date, "dd/MM/yyyy HH:mm"); }).join();
  NSTimeZone::setDefaultTimeZone(nullptr);
  EXPECT_EQ(text, "01/07/2021 09:00");
}

TEST(NSDateNorvikFormatting, ABackgroundThreadMakesAFormatterForEachCallAndKeepsNone) {
  auto& kept = detail::mainThreadFormatters();
  const bool wasFilled = kept.ukPattern.isFilled();
  const unsigned made = kept.ukPattern.made();
  std::thread([] {
    EXPECT_EQ(nk_ukDateStringWithFormat("2021-07-01"_date, "HH:mm"), "01:00");
    EXPECT_EQ(nk_ukDateStringWithFormat("2021-07-01"_date, "HH:mm"), "01:00");
  }).join();
  EXPECT_EQ(kept.ukPattern.made(), made + 2);
  EXPECT_EQ(kept.ukPattern.isFilled(), wasFilled);
}

TEST(NSDateNorvikFormatting, TheMainThreadKeepsOneFormatterOfEachKind) {
  auto& kept = detail::mainThreadFormatters();
  for (int i = 0; i < 3; ++i) {
    (void)nk_utcDateStringWithFormat("2021-07-01"_date, "HH:mm");
    (void)nk_ukDateStringWithFormat("2021-07-01"_date, "HH:mm");
    (void)nk_localDateStringWithFormat("2021-07-01"_date, "HH:mm");
    (void)NKUtcDateFormatter::localizedStringFromDate("2021-07-01"_date, NSDateFormatterShortStyle,
                                                      NSDateFormatterNoStyle);
  }
  EXPECT_TRUE(kept.utcPattern.isFilled());
  EXPECT_TRUE(kept.ukPattern.isFilled());
  EXPECT_TRUE(kept.localPattern.isFilled());
  EXPECT_TRUE(kept.utcStyle.isFilled());
  const unsigned made = kept.utcPattern.made();
  EXPECT_EQ(nk_utcDateStringWithFormat("2021-07-01"_date, "mm:HH"), "00:00");
  EXPECT_EQ(kept.utcPattern.made(), made);
}

TEST(NSDateNorvikFormatting, ManyThreadsFormatAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([] {
      for (int day = 1; day <= 28; ++day) {
        const Date date = Date::fromReferenceSeconds(86400.0 * (day - 1));
        const std::string expected = std::to_string(day) + " Jan 2001";
        EXPECT_EQ(nk_utcDateStringWithFormat(date, "d MMM yyyy"), expected);
      }
    });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace norvik
