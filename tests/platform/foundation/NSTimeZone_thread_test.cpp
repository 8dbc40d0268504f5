// The class operations and the cache of zones are synchronised. Checked by the thread sanitizer and by these values.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/foundation/internal/ZoneDatabase.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "tests/support/OnThreads.h"

namespace norvik {
namespace {

using norvik::test::onThreads;

constexpr int zoneThreads = 4;

TEST(NSTimeZoneThreads, AZoneThatManyAskForFirstIsReadOnce) {
  std::array<const detail::ZoneRules*, zoneThreads> found{};
  onThreads(zoneThreads,
            [&](int number) { found[static_cast<std::size_t>(number)] = detail::zoneNamed("America/St_Johns"); });
  ASSERT_NE(found[0], nullptr);
  for (const detail::ZoneRules* rules : found) EXPECT_EQ(rules, found[0]);
}

TEST(NSTimeZoneThreads, ManyLookUpNamesThatAreKnownNewAndNone) {
  const struct {
    const char* name;
    NSInteger inJuly;
  } zones[] = {{"Europe/London", 3600}, {"Asia/Kathmandu", 20700}, {"America/New_York", -14400}, {"UTC", 0}};
  onThreads(zoneThreads, [&](int number) {
    for (int round = 0; round < 50; ++round) {
      const auto& [name, inJuly] = zones[static_cast<std::size_t>(number + round) % std::size(zones)];
      EXPECT_EQ(NSTimeZone::timeZoneWithName(name)->secondsFromGMTForDate("2021-07-01"_date), inJuly) << name;
      EXPECT_FALSE(NSTimeZone::timeZoneWithName("Europe/Nowhere"));
      EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(round * 60)->secondsFromGMT(), round * 60);
    }
  });
}

TEST(NSTimeZoneThreads, TheDefaultIsWhatSomeThreadHasSet) {
  const Ref<NSTimeZone> tokyo = NSTimeZone::timeZoneWithName("Asia/Tokyo");
  const Ref<NSTimeZone> utc = NSTimeZone::timeZoneWithName("UTC");
  NSTimeZone::setDefaultTimeZone(utc);
  onThreads(zoneThreads, [&](int number) {
    for (int round = 0; round < 200; ++round) {
      NSTimeZone::setDefaultTimeZone((number + round) % 2 == 0 ? tokyo : utc);
      const Ref<NSTimeZone> found = NSTimeZone::defaultTimeZone();
      EXPECT_TRUE(found == tokyo || found == utc) << found->name();
    }
  });
  NSTimeZone::setDefaultTimeZone(nullptr);
}

TEST(NSTimeZoneThreads, TheSystemsZoneIsThereWhileItIsAskedAnew) {
  const NSString name = NSTimeZone::systemTimeZone()->name();
  onThreads(zoneThreads, [&](int number) {
    for (int round = 0; round < 50; ++round) {
      if (number == 0) NSTimeZone::resetSystemTimeZone();
      EXPECT_EQ(NSTimeZone::systemTimeZone()->name(), name);
    }
  });
}

}  // namespace
}  // namespace norvik
