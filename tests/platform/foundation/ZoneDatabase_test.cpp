#include "NorvikCore/platform/foundation/internal/ZoneDatabase.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "NorvikCore/platform/values/CivilDate.h"

namespace norvik::detail {
namespace {

std::int64_t secondsAt(const std::string& text) { return wholeSeconds(*Date::dateWithString(text)); }

const ZoneType winter{0, false, "GMT"}, summer{3600, true, "BST"};

/// The instants at which London changed its clocks from 1970 to 1995. The first one ends British Standard Time; then
/// summer time alternately starts and ends.
const char* const changesTo1995[] = {
    "1971-10-31 02:00", "1972-03-19 02:00", "1972-10-29 02:00", "1973-03-18 02:00", "1973-10-28 02:00",
    "1974-03-17 02:00", "1974-10-27 02:00", "1975-03-16 02:00", "1975-10-26 02:00", "1976-03-21 02:00",
    "1976-10-24 02:00", "1977-03-20 02:00", "1977-10-23 02:00", "1978-03-19 02:00", "1978-10-29 02:00",
    "1979-03-18 02:00", "1979-10-28 02:00", "1980-03-16 02:00", "1980-10-26 02:00", "1981-03-29 01:00",
    "1981-10-25 01:00", "1982-03-28 01:00", "1982-10-24 01:00", "1983-03-27 01:00", "1983-10-23 01:00",
    "1984-03-25 01:00", "1984-10-28 01:00", "1985-03-31 01:00", "1985-10-27 01:00", "1986-03-30 01:00",
    "1986-10-26 01:00", "1987-03-29 01:00", "1987-10-25 01:00", "1988-03-27 01:00", "1988-10-23 01:00",
    "1989-03-26 01:00", "1989-10-29 01:00", "1990-03-25 01:00", "1990-10-28 01:00", "1991-03-31 01:00",
    "1991-10-27 01:00", "1992-03-29 01:00", "1992-10-25 01:00", "1993-03-28 01:00", "1993-10-24 01:00",
    "1994-03-27 01:00", "1994-10-23 01:00", "1995-03-26 01:00", "1995-10-22 01:00"};

std::int64_t lastSunday(int year, int month) {
  std::int64_t day = referenceDay(year, month, 31);
  while (weekday(day) != 1) --day;
  return day;
}

/// All changes from 1970 to 2037: the table, then the last Sundays in March and October at 01:00 UTC.
std::vector<std::int64_t> londonChanges() {
  std::vector<std::int64_t> changes;
  for (const char* change : changesTo1995) changes.push_back(secondsAt(change));
  for (int year = 1996; year <= 2037; ++year) {
    changes.push_back(lastSunday(year, 3) * 86'400 + 3600);
    changes.push_back(lastSunday(year, 10) * 86'400 + 3600);
  }
  return changes;
}

void expectLondonChanges(const ZoneRules& london) {
  bool isSummer = true;
  std::int64_t before = secondsAt("1970-01-01");
  for (const std::int64_t change : londonChanges()) {
    const std::string why = Date::fromReferenceSeconds(static_cast<double>(change)).description();
    ASSERT_EQ(london.nextChangeAfter(before), change) << why;
    ASSERT_EQ(london.typeAt(change - 1).offset, isSummer ? 3600 : 0) << why;
    isSummer = !isSummer;
    ASSERT_EQ(london.typeAt(change), isSummer ? summer : winter) << why;
    ASSERT_EQ(london.spanAt(change).from, change) << why;
    ASSERT_EQ(london.spanAt(change - 1).until, change) << why;
    if (isSummer) {
      ASSERT_EQ(london.instantOfLocal(change - 1), change - 1) << why;
      ASSERT_EQ(london.instantOfLocal(change), change) << "skipped: moves forward, " << why;
      ASSERT_EQ(london.instantOfLocal(change + 3599), change + 3599) << "skipped: moves forward, " << why;
      ASSERT_EQ(london.instantOfLocal(change + 3600), change) << why;
    } else {
      ASSERT_EQ(london.instantOfLocal(change - 1), change - 3601) << why;
      ASSERT_EQ(london.instantOfLocal(change), change - 3600) << "twice: the first, " << why;
      ASSERT_EQ(london.instantOfLocal(change + 3599), change - 1) << "twice: the first, " << why;
      ASSERT_EQ(london.instantOfLocal(change + 3600), change + 3600) << why;
    }
    before = change;
  }
}

TEST(ZoneDatabase, LondonIsRightAtEveryChangeFrom1970To2037) {
  EXPECT_EQ(londonChanges().size(), 133u);
  expectLondonChanges(*zoneNamed("Europe/London"));
}

TEST(ZoneDatabase, IcusDataHasTheSameChangesOfLondon) { expectLondonChanges(*zoneFromIcu("Europe/London")); }

TEST(ZoneDatabase, LondonIsRightFrom1847To1970AndAfter2037) {
  const ZoneRules& london = *zoneNamed("Europe/London");
  const struct {
    const char *why, *instant;
    ZoneType expected;
  } rows[] = {
      {"local mean time", "1847-12-01 00:01:14", {-75, false, "LMT"}},
      {"railway time", "1847-12-01 00:01:15", winter},
      {"before the first summer time", "1916-05-21 01:59:59", winter},
      {"the first summer time", "1916-05-21 02:00:00", summer},
      {"its end", "1916-10-01 02:00:00", winter},
      {"double summer time", "1941-05-04 01:00:00", {7200, true, "BDST"}},
      {"summer time in winter", "1942-01-01 00:00:00", summer},
      {"double summer time once more", "1947-04-13 01:00:00", {7200, true, "BDST"}},
      {"the last winter before the experiment", "1968-02-18 01:59:59", winter},
      {"summer 1968", "1968-07-01 00:00:00", summer},
      {"British Standard Time is no summer time", "1969-01-01 00:00:00", {3600, false, "BST"}},
      {"its last second", "1971-10-31 01:59:59", {3600, false, "BST"}},
      {"summer 2038", "2038-03-28 01:00:00", summer},
      {"before summer 2100", "2100-03-28 00:59:59", winter},
      {"summer 2100", "2100-03-28 01:00:00", summer},
      {"its end", "2100-10-31 01:00:00", winter},
  };
  for (const auto& row : rows) EXPECT_EQ(london.typeAt(secondsAt(row.instant)), row.expected) << row.why;
}

TEST(ZoneDatabase, AgreesWithIcuFrom1847To2100) {
  const ZoneRules& london = *zoneNamed("Europe/London");
  const std::optional<ZoneRules> icu = zoneFromIcu("Europe/London");
  ASSERT_TRUE(icu);
  // The version of ICU determines whether local mean time is in whole minutes or seconds. After the first change both
  // sources are exact.
  const std::int64_t first = secondsAt("1847-12-02"), last = secondsAt("2100-12-31");
  for (std::int64_t at = first; at < last; at += 11 * 3600)
    ASSERT_EQ(london.typeAt(at).offset, icu->typeAt(at).offset) << at;
}

TEST(ZoneDatabase, LocalTimesComeBackInManyZones) {
  std::mt19937_64 random(7);
  std::uniform_int_distribution<std::int64_t> anyInstant(secondsAt("1850-01-01"), secondsAt("2150-01-01"));
  for (const char* name :
       {"Europe/London", "Europe/Dublin", "America/New_York", "Australia/Lord_Howe", "Asia/Kathmandu", "Pacific/Apia",
        "Africa/Casablanca", "Antarctica/Troll", "America/St_Johns", "UTC"}) {
    const ZoneRules* zone = zoneNamed(name);
    ASSERT_TRUE(zone) << name;
    for (int i = 0; i < 20'000; ++i) {
      const std::int64_t at = anyInstant(random);
      const std::int64_t local = at + zone->typeAt(at).offset;
      const std::int64_t found = zone->instantOfLocal(local);
      ASSERT_EQ(found + zone->typeAt(found).offset, local) << name << ' ' << at;
      ASSERT_LE(found, at) << "the first of two: " << name;
      const ZoneSpan span = zone->spanAt(at);
      ASSERT_TRUE(span.from <= at && at < span.until) << name << ' ' << at;
      ASSERT_EQ(*span.type, zone->typeAt(at)) << name << ' ' << at;
    }
  }
}

TEST(ZoneDatabase, KeepsWhatItFound) { EXPECT_EQ(zoneNamed("Europe/London"), zoneNamed("Europe/London")); }

TEST(ZoneDatabase, RefusesNamesOfNoZone) {
  for (const char* name : {"", "Europe/Nowhere", "Europe", "../../../etc/passwd", "/etc/localtime", "Europe/London/",
                           "Europe/../Europe/London", "zone.tab", "tzdata.zi", "right/Europe/London"})
    EXPECT_EQ(zoneNamed(name), nullptr) << name;
}

TEST(ZoneDatabase, TheEnvironmentNamesAZoneAFileOrARule) {
  const std::int64_t summerDay = secondsAt("2021-07-01");
  EXPECT_EQ(zoneFromEnvironmentValue("Europe/London").name, "Europe/London");
  EXPECT_EQ(zoneFromEnvironmentValue(":Europe/London").rules, zoneNamed("Europe/London"));
  EXPECT_EQ(zoneFromEnvironmentValue("").name, "UTC");
  const NamedZone file = zoneFromEnvironmentValue("/usr/share/zoneinfo/America/New_York");
  EXPECT_EQ(file.name, "America/New_York");
  EXPECT_EQ(file.rules, zoneNamed("America/New_York"));
  const NamedZone rule = zoneFromEnvironmentValue("ABC-3");
  ASSERT_TRUE(rule.rules);
  EXPECT_EQ(rule.rules->typeAt(summerDay).offset, 10800);
  EXPECT_EQ(zoneFromEnvironmentValue("Nowhere").rules, nullptr);
  EXPECT_EQ(zoneFromEnvironmentValue("/etc/passwd").rules, nullptr);
}

TEST(ZoneDatabase, TheSystemHasAZone) { EXPECT_TRUE(systemZone().rules); }

}  // namespace
}  // namespace norvik::detail
