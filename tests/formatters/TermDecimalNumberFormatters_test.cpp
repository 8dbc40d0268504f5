#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/formatters/NKPercentageTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"

#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "tests/support/Decimals.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <array>
#include <latch>
#include <thread>
#include <vector>

using namespace norvik;

namespace {

using norvik::test::dec;

struct TermDecimalNumberFormatters : testing::Test {
  /// Creates the formatter that the main thread keeps, without bounds, whichever test runs first.
  TermDecimalNumberFormatters() { (void)NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(0); }
  ~TermDecimalNumberFormatters() override {
    NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(std::nullopt, std::nullopt);
    NKPercentageTermDecimalNumberFormatter::defineMaxDecimalTerm(std::nullopt, std::nullopt);
  }
};

}  // namespace

TEST_F(TermDecimalNumberFormatters, HeaderExample) {
  NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(999999, 0);
  auto money = make<NKMonetaryTermDecimalNumberFormatter>();
  EXPECT_EQ(money->maximum(), NSNumber(999999));
  EXPECT_EQ(NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5")), "1,234.50");
  NKPercentageTermDecimalNumberFormatter::defineMaxDecimalTerm(100, 0);
  auto formatter = make<NKPercentageTermDecimalNumberFormatter>();
  EXPECT_EQ(formatter->maximum(), NSNumber(100));
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));  // the user's is the default
  EXPECT_EQ(formatter->stringFromNumber(dec("12.125")), "12.125");
}

TEST_F(TermDecimalNumberFormatters, MoneyShowsTwoToFourFractionDigits) {
  const struct {
    const char *number, *expected;
  } rows[] = {{"1234.5", "1,234.50"},
              {"1234.56789", "1,234.5679"},
              {"0", "0.00"},
              {"-7.125", "-7.125"},
              {"1234567", "1,234,567.00"}};
  for (const auto& row : rows) {
    EXPECT_EQ(NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec(row.number)), row.expected);
  }
}

TEST_F(TermDecimalNumberFormatters, RatesShowOneToFourFractionDigits) {
  const auto formatter = make<NKPercentageTermDecimalNumberFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  EXPECT_EQ(formatter->stringFromNumber(12), "12.0");
  EXPECT_EQ(formatter->stringFromNumber(dec("12.12345")), "12.1234");
  EXPECT_EQ(formatter->stringFromNumber(dec("1234.125")), "1,234.125");
}

TEST_F(TermDecimalNumberFormatters, ReadDecimals) {
  const auto money = make<NKMonetaryTermDecimalNumberFormatter>();
  money->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  EXPECT_EQ(money->numberFromString(" 1,234.5 ")->kind(), NSNumber::Kind::Decimal);
  EXPECT_EQ(money->numberFromString("1,2,34.5x"), std::nullopt);
}

TEST_F(TermDecimalNumberFormatters, TakeTheirClassesBoundsWhenTheyAreMade) {
  const auto before = make<NKMonetaryTermDecimalNumberFormatter>();
  NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(1000, dec("-10"));
  const auto money = make<NKMonetaryTermDecimalNumberFormatter>();
  const auto rate = make<NKPercentageTermDecimalNumberFormatter>();
  EXPECT_EQ(money->maximum(), NSNumber(1000));
  EXPECT_EQ(money->minimum(), NSNumber(-10));
  EXPECT_EQ(money->maxLength(), 9);
  EXPECT_EQ(money->maximumIntegerDigits(), 4);
  EXPECT_EQ(before->maximum(), std::nullopt);
  EXPECT_EQ(before->maxLength(), 0);
  EXPECT_EQ(rate->maximum(), std::nullopt) << "the two classes keep separate bounds";
  NKPercentageTermDecimalNumberFormatter::defineMaxDecimalTerm(100, 0);
  EXPECT_EQ(make<NKPercentageTermDecimalNumberFormatter>()->maxLength(), 8);
  EXPECT_EQ(money->maximum(), NSNumber(1000));
}

TEST_F(TermDecimalNumberFormatters, FormattersOfTheApplicationKeepTheUsersLocale) {
  EXPECT_EQ(make<NKMonetaryTermDecimalNumberFormatter>()->locale(), NSLocale::currentLocale());
  EXPECT_EQ(make<NKPercentageTermDecimalNumberFormatter>()->locale(), NSLocale::currentLocale());
}

TEST_F(TermDecimalNumberFormatters, TheMoneyTextIsTheSameOnAnyThread) {
  NSString onOther;
  std::thread([&] { onOther = NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5")); }).join();
  EXPECT_EQ(onOther, "1,234.50");
}

TEST_F(TermDecimalNumberFormatters, TheMainThreadKeepsItsFirstBoundsAndOthersUseThoseOfTheTime) {
  NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(10, 0);
  EXPECT_EQ(NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5")), "1,234.50");
  NSString first, second;
  std::thread([&] {
    first = NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5"));
    NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(100, 0);
    second = NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5"));
  }).join();
  EXPECT_EQ(first, "34.50") << "the bound 10 has two characters";
  EXPECT_EQ(second, "234.50");
  EXPECT_EQ(NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5")), "1,234.50");
}

TEST_F(TermDecimalNumberFormatters, ManyThreadsWriteMoneyWhileOtherBoundsAreDefined) {
  constexpr int threads = 4, texts = 500;
  std::latch start(threads + 1);
  std::array<int, threads> wrong{};
  std::vector<std::thread> writers;
  for (int i = 0; i < threads; ++i) {
    writers.emplace_back([&, i] {
      start.arrive_and_wait();
      for (int n = 0; n < texts; ++n) {
        const NSString text = NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5"));
        if (text != "1,234.50" && text != "34.50") ++wrong[static_cast<std::size_t>(i)];
      }
    });
  }
  start.arrive_and_wait();
  for (int n = 0; n < 100; ++n) {
    NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(10, 0);
    NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(9999, 0);
  }
  for (std::thread& each : writers) each.join();
  EXPECT_EQ(wrong, (std::array<int, threads>{}));
  NSString last;
  std::thread([&] { last = NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5")); }).join();
  EXPECT_EQ(last, "1,234.50");
}

/// Writes money when its thread ends, after the thread's formatter is destroyed.
struct WritesAtTheEnd {
  NSString* text = nullptr;
  ~WritesAtTheEnd() {
    if (text) *text = NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5"));
  }
};
thread_local WritesAtTheEnd writesAtTheEnd;

TEST_F(TermDecimalNumberFormatters, AThreadWritesMoneyWhileItsThreadLocalObjectsAreDestroyed) {
  NSString during, atTheEnd;
  std::thread([&] {
    writesAtTheEnd.text = &atTheEnd;  // made first, so destroyed last
    during = NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(dec("1234.5"));
  }).join();
  EXPECT_EQ(during, "1,234.50");
  EXPECT_EQ(atTheEnd, "1,234.50");
}

TEST_F(TermDecimalNumberFormatters, AreSetUpAnewWhenTheyAreDecoded) {
  const auto money = make<NKMonetaryTermDecimalNumberFormatter>();
  money->setLocale(NSLocale::localeWithLocaleIdentifier("de_DE"));
  money->setLenient(false);
  const auto data = NSKeyedArchiver::archivedDataWithRootObject(Value(money));
  NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(1000, 0);
  const auto same = NSKeyedUnarchiver::unarchiveObjectWithData(*data).as<Ref<NKMonetaryTermDecimalNumberFormatter>>();
  ASSERT_TRUE(same);
  EXPECT_EQ(same->locale()->localeIdentifier(), "de_DE") << "the application's locale stays";
  EXPECT_TRUE(same->lenient());
  EXPECT_TRUE(same->generatesDecimalNumbers());
  EXPECT_EQ(same->maximum(), NSNumber(1000));
  EXPECT_EQ(same->maxLength(), 9);
  EXPECT_EQ(same->stringFromNumber(dec("123.5")), "123,50");
}
