#include "TimePhrase.h"

#include <gtest/gtest.h>

#include "LogLine.h"
#include "Output.h"

namespace norvik_log {
namespace {

WallClock clockOf(const char* zone) { return WallClock(norvik::NSTimeZone::timeZoneWithName(zone)); }

std::int64_t instant(const char* utc) {
  const std::string text = utc;
  const auto time = headTime(text.data(), text.data() + text.size());
  EXPECT_TRUE(time) << utc;
  return time ? time->milliseconds : 0;
}

std::string read(const char* phrase, const char* zone, const char* now, Pass pass = Pass::First) {
  return utcTime(instantOfPhrase(phrase, clockOf(zone), instant(now), pass));
}

TEST(TimePhrase, IsReadAsTheZonesClocksShowIt) {
  const struct {
    const char *phrase, *zone, *now, *expected;
  } rows[] = {
      {"now", "Europe/London", "2021-05-10T13:30:12.045Z", "2021-05-10T13:30:12.045Z"},
      {"today", "Europe/London", "2021-05-10T13:30:00Z", "2021-05-09T23:00:00.000Z"},
      {"yesterday", "Europe/London", "2021-05-10T13:30:00Z", "2021-05-08T23:00:00.000Z"},
      {"today", "Europe/London", "2021-05-10T22:59:59.999Z", "2021-05-09T23:00:00.000Z"},
      {"today", "Europe/London", "2021-05-10T23:00:00Z", "2021-05-10T23:00:00.000Z"},
      {"yesterday 14:00", "Europe/London", "2021-05-10T13:30:00Z", "2021-05-09T13:00:00.000Z"},
      {"Yesterday  14:00", "UTC", "2021-05-10T13:30:00Z", "2021-05-09T14:00:00.000Z"},
      {"14:00", "Europe/London", "2021-01-10T09:00:00Z", "2021-01-10T14:00:00.000Z"},
      {"9:05", "Europe/London", "2021-01-10T12:00:00Z", "2021-01-10T09:05:00.000Z"},
      {"14:00:05.25", "UTC", "2021-01-10T09:00:00Z", "2021-01-10T14:00:05.250Z"},
      {"14:00Z", "Europe/London", "2021-05-10T09:00:00Z", "2021-05-10T14:00:00.000Z"},
      {"2 hours ago", "Europe/London", "2021-05-10T13:30:12.045Z", "2021-05-10T11:30:12.045Z"},
      {"90s ago", "UTC", "2021-05-10T13:30:00Z", "2021-05-10T13:28:30.000Z"},
      {"5 min ago", "UTC", "2021-05-10T13:30:00Z", "2021-05-10T13:25:00.000Z"},
      {"1 day ago", "Europe/London", "2021-03-28T12:00:00Z", "2021-03-27T13:00:00.000Z"},
      {"24 hours ago", "Europe/London", "2021-03-28T12:00:00Z", "2021-03-27T12:00:00.000Z"},
      {"2 weeks ago", "UTC", "2021-05-10T13:30:00Z", "2021-04-26T13:30:00.000Z"},
      {"monday", "UTC", "2021-05-10T13:30:00Z", "2021-05-10T00:00:00.000Z"},
      {"tuesday", "UTC", "2021-05-10T13:30:00Z", "2021-05-04T00:00:00.000Z"},
      {"sunday 8:00", "UTC", "2021-05-10T13:30:00Z", "2021-05-09T08:00:00.000Z"},
      {"2021-05-10", "Europe/London", "2022-01-01T00:00:00Z", "2021-05-09T23:00:00.000Z"},
      {"2021-05-10 14:30", "Europe/London", "2022-01-01T00:00:00Z", "2021-05-10T13:30:00.000Z"},
      {"2021-05-10 13:30:12.045", "UTC", "2022-01-01T00:00:00Z", "2021-05-10T13:30:12.045Z"},
      {"2021-05-10T13:30:12.045Z", "Asia/Tokyo", "2022-01-01T00:00:00Z", "2021-05-10T13:30:12.045Z"},
      {"2021-05-10 13:30:12 +01:00", "Asia/Tokyo", "2022-01-01T00:00:00Z", "2021-05-10T12:30:12.000Z"},
      {"2021-05-10 13:30-0530", "UTC", "2022-01-01T00:00:00Z", "2021-05-10T19:00:00.000Z"},
      {"2021/05/10 14:30:12:045", "Europe/London", "2022-01-01T00:00:00Z", "2021-05-10T13:30:12.045Z"},
      {"2020-02-29", "UTC", "2022-01-01T00:00:00Z", "2020-02-29T00:00:00.000Z"},
  };
  for (const auto& row : rows) EXPECT_EQ(read(row.phrase, row.zone, row.now), row.expected) << row.phrase;
}

TEST(TimePhrase, OfAnHourThatTheClocksShowTwiceThereAreTwoInstants) {
  const char* const now = "2021-11-10T12:00:00Z";
  const struct {
    const char *phrase, *first, *second;
  } rows[] = {
      {"2021-10-31 00:59:59.999", "2021-10-30T23:59:59.999Z", "2021-10-30T23:59:59.999Z"},
      {"2021-10-31 01:00", "2021-10-31T00:00:00.000Z", "2021-10-31T01:00:00.000Z"},
      {"2021-10-31 01:59:59.999", "2021-10-31T00:59:59.999Z", "2021-10-31T01:59:59.999Z"},
      {"2021-10-31 02:00", "2021-10-31T02:00:00.000Z", "2021-10-31T02:00:00.000Z"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(read(row.phrase, "Europe/London", now, Pass::First), row.first) << row.phrase;
    EXPECT_EQ(read(row.phrase, "Europe/London", now, Pass::Second), row.second) << row.phrase;
  }
}

TEST(TimePhrase, ATimeThatTheClocksSkippedIsTheInstantAtWhichTheyDid) {
  const struct {
    const char *phrase, *zone, *expected;
  } rows[] = {
      {"2021-03-28 00:59:59.999", "Europe/London", "2021-03-28T00:59:59.999Z"},
      {"2021-03-28 01:00", "Europe/London", "2021-03-28T01:00:00.000Z"},
      {"2021-03-28 01:30", "Europe/London", "2021-03-28T01:00:00.000Z"},
      {"2021-03-28 01:59:59.999", "Europe/London", "2021-03-28T01:00:00.000Z"},
      {"2021-03-28 02:00", "Europe/London", "2021-03-28T01:00:00.000Z"},
      {"2021-03-28 02:00:00.001", "Europe/London", "2021-03-28T01:00:00.001Z"},
      {"2011-12-29 23:59", "Pacific/Apia", "2011-12-30T09:59:00.000Z"},
      {"2011-12-30 12:00", "Pacific/Apia", "2011-12-30T10:00:00.000Z"},
      {"2011-12-31 00:00", "Pacific/Apia", "2011-12-30T10:00:00.000Z"},
      {"2011-12-31 00:01", "Pacific/Apia", "2011-12-30T10:01:00.000Z"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(read(row.phrase, row.zone, "2022-01-01T00:00:00Z"), row.expected) << row.phrase;
}

TEST(TimePhrase, RefusesWhatIsNoTime) {
  for (const char* const phrase : {"",
                                   " ",
                                   "soon",
                                   "25:00",
                                   "24:00",
                                   "14:60",
                                   "14",
                                   "14:00:60",
                                   "2021-02-29",
                                   "2021-13-01",
                                   "2021-00-10",
                                   "2021-1-1",
                                   "2021-05-32",
                                   "0000-01-01",
                                   "yesterday noon",
                                   "2 ago",
                                   "hours ago",
                                   "-2 hours ago",
                                   "2 fortnights ago",
                                   "14:00 15:00",
                                   "2021-05-10 14:00 extra",
                                   "2021-05-10T",
                                   "14:00+1",
                                   "14:00+24:00",
                                   "2021-05/10",
                                   "999999999999999 days ago",
                                   "1000000000 weeks ago",
                                   "14:00:05.",
                                   "yesterday 14:00 14:00"}) {
    EXPECT_THROW(read(phrase, "UTC", "2022-01-01T00:00:00Z"), PhraseError) << phrase;
  }
}

TEST(WallClock, TellsWhichTimesWereShownTwice) {
  WallClock london = clockOf("Europe/London"), utc = clockOf("UTC");
  EXPECT_FALSE(london.isShownTwice(instant("2021-10-31 00:59:59.999")));
  EXPECT_TRUE(london.isShownTwice(instant("2021-10-31 01:00:00")));
  EXPECT_TRUE(london.isShownTwice(instant("2021-10-31 01:59:59.999")));
  EXPECT_FALSE(london.isShownTwice(instant("2021-10-31 02:00:00")));
  EXPECT_FALSE(london.isShownTwice(instant("2021-03-28 01:30:00")));
  EXPECT_FALSE(utc.isShownTwice(instant("2021-10-31 01:30:00")));
}

}  // namespace
}  // namespace norvik_log
