#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "NorvikCore/platform/foundation/NSLocale.h"
#include "tests/support/OnThreads.h"

namespace norvik {
namespace {

using norvik::test::onThreads;

constexpr int threadCount = 4;

TEST(NSLocaleThreads, AllGetOneCurrentAndOneSystemLocale) {
  std::array<const NSLocale*, threadCount> current{}, system{};
  onThreads(threadCount, [&](int number) {
    current[static_cast<std::size_t>(number)] = NSLocale::currentLocale().get();
    system[static_cast<std::size_t>(number)] = NSLocale::systemLocale().get();
  });
  for (const NSLocale* each : current) EXPECT_EQ(each, current[0]);
  for (const NSLocale* each : system) EXPECT_EQ(each, system[0]);
  EXPECT_EQ(system[0]->localeIdentifier(), "");
}

TEST(NSLocaleThreads, ManyReadOneLocaleAndMakeTheirOwn) {
  const Ref<NSLocale> german = NSLocale::localeWithLocaleIdentifier("de_DE");
  onThreads(threadCount, [&](int) {
    for (int round = 0; round < 20; ++round) {
      EXPECT_EQ(german->objectForKey(NSLocaleDecimalSeparator), Value(","));
      EXPECT_EQ(german->objectForKey(NSLocaleCurrencyCode), Value("EUR"));
      EXPECT_EQ(NSLocale::localeWithLocaleIdentifier("en_GB")->objectForKey(NSLocaleCurrencySymbol), Value("£"));
    }
  });
}

}  // namespace
}  // namespace norvik
