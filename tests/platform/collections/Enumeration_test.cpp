#include "NorvikCore/platform/collections/Enumeration.h"

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/object/ObjectMacros.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/LittleMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <ranges>
#include <string>
#include <vector>

namespace norvik {
namespace {

using testing::ElementsAre;

class ListedPayslip : public NSObject {
  NK_OBJECT(ListedPayslip, NSObject)
  NK_PROPERTY(Decimal, netPay, setNetPay)
  NK_PROPERTY(bool, isPaid, setIsPaid)
 public:
  explicit ListedPayslip(Decimal netPay = 0, bool isPaid = false) {
    setNetPay(netPay);
    setIsPaid(isPaid);
  }
};

Ref<NSMutableArray> threePayslips() {
  auto slips = NSMutableArray::array();
  slips->addObject(make<ListedPayslip>(1200_dec, true));
  slips->addObject(make<ListedPayslip>(950.50_dec, false));
  slips->addObject(make<ListedPayslip>(310_dec, true));
  return slips;
}

template <class Range>
std::vector<std::string> texts(Range&& range) {
  std::vector<std::string> all;
  for (auto&& each : range) all.push_back(to_string(each));
  return all;
}

/// The name and reason of the exception that the call raises.
template <class Call>
std::string raised(Call call) {
  try {
    call();
  } catch (const NSException& exception) {
    return exception.name().str() + ": " + exception.reason().str();
  }
  return "nothing";
}

const auto netPay = [](const ListedPayslip& slip) { return slip.netPay(); };
const auto isPaid = [](const ListedPayslip& slip) { return slip.isPaid(); };

template <class Collection, class T>
using As = decltype(std::declval<const Collection&>().template as<T>());
static_assert(std::ranges::view<As<NSArray, ListedPayslip>> &&
              std::ranges::random_access_range<As<NSArray, ListedPayslip>>);
static_assert(std::ranges::random_access_range<As<NSArray, Decimal>> && std::ranges::sized_range<As<NSArray, Decimal>>);
static_assert(std::ranges::common_range<As<NSArray, Decimal>> && !std::ranges::borrowed_range<As<NSArray, Decimal>>);
static_assert(std::ranges::view<As<NSSet, ListedPayslip>> && std::ranges::forward_range<As<NSSet, NSString>>);
static_assert(!std::ranges::bidirectional_range<As<NSSet, NSString>> && std::ranges::sized_range<As<NSSet, NSString>>);
static_assert(std::ranges::random_access_range<NSArray> && std::ranges::forward_range<NSDictionary>);
static_assert(std::same_as<std::ranges::range_reference_t<As<NSArray, ListedPayslip>>, ListedPayslip&>);
static_assert(std::same_as<std::ranges::range_reference_t<As<NSArray, const ListedPayslip>>, const ListedPayslip&>);
static_assert(std::same_as<std::ranges::range_reference_t<As<NSArray, Decimal>>, Decimal>);

TEST(Enumeration, ElementsAreARangeForAlgorithms) {
  const auto slips = threePayslips();
  const auto all = slips->as<ListedPayslip>();
  EXPECT_EQ(std::ranges::count_if(all, isPaid), 2);
  EXPECT_EQ(std::ranges::max_element(all, {}, netPay)->netPay(), 1200);
  EXPECT_EQ(std::ranges::find(all, 310, netPay) - all.begin(), 2);
  EXPECT_TRUE(std::ranges::any_of(slips->as<ListedPayslip>(), isPaid)) << "of a temporary view";
  EXPECT_EQ(all.size(), 3u);
  EXPECT_FALSE(all.empty());
  EXPECT_EQ(all[1].netPay(), 950.50_dec);
  EXPECT_EQ(std::accumulate(all.begin(), all.end(), 0_dec,
                            [](Decimal sum, const ListedPayslip& s) { return sum + s.netPay(); }),
            2460.50_dec);
  const auto amounts = NSArray::arrayWithObjects(3_dec, 1, 2.5)->as<Decimal>();
  EXPECT_THAT(std::vector<Decimal>(amounts.begin(), amounts.end()), ElementsAre(3_dec, 1_dec, 2.5_dec));
  EXPECT_EQ(std::ranges::min(amounts), 1);
  const auto sorted = NSArray::arrayWithObjects(1, 3, 5, 7);
  EXPECT_EQ(*std::ranges::lower_bound(sorted->as<int>().begin(), sorted->as<int>().end(), 4), 5);
  EXPECT_EQ(*(sorted->end() - 1), 7);
  EXPECT_EQ(sorted->begin()[2], 5);
}

#ifndef __clang__  // clang before 16 cannot compile the views of libstdc++ 12
TEST(Enumeration, ElementsAreAViewForPipelines) {
  const auto slips = threePayslips();
  EXPECT_THAT(texts(slips->as<ListedPayslip>() | std::views::filter(isPaid) | std::views::transform(netPay)),
              ElementsAre("1200", "310"));
  EXPECT_THAT(texts(slips->as<ListedPayslip>() | std::views::transform(&ListedPayslip::netPay) | std::views::take(2)),
              ElementsAre("1200", "950.50"));
  EXPECT_THAT(texts(slips->as<ListedPayslip>() | std::views::reverse | std::views::transform(netPay)),
              ElementsAre("310", "950.50", "1200"));
  for (ListedPayslip& slip : slips->as<ListedPayslip>() | std::views::filter(isPaid)) slip.setNetPay(slip.netPay() + 1);
  EXPECT_THAT(texts(slips->as<ListedPayslip>() | std::views::transform(netPay)), ElementsAre("1201", "950.50", "311"));
  EXPECT_EQ(std::ranges::distance(*slips | std::views::filter([](const Value& each) { return each.isObject(); })), 3);
}

TEST(Enumeration, APipelineRetainsItsCollection) {
  auto paid = threePayslips()->as<ListedPayslip>() | std::views::filter(isPaid);
  EXPECT_EQ(std::ranges::distance(paid), 2);
}

TEST(Enumeration, EntriesOfADictionaryAreAViewOfPairs) {
  const auto rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}});
  EXPECT_THAT(texts(rates->as<NSString, Decimal>() | std::views::values), ElementsAre("0.20", "0.40"));
  std::vector<std::string> names;
  for (const NSString& name : rates->as<NSString, Decimal>() | std::views::keys) names.push_back(name.str());
  EXPECT_THAT(names, ElementsAre("basic", "higher"));
}
#endif

TEST(Enumeration, EntriesOfADictionaryAreTyped) {
  const auto rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}});
  Decimal sum;
  for (auto [band, rate] : rates->as<NSString, Decimal>()) sum += rate;
  EXPECT_EQ(sum, 0.60_dec);
  EXPECT_EQ(rates->size(), 2u);
  EXPECT_FALSE(rates->empty());
  const auto slip = make<ListedPayslip>(5_dec);
  const auto slips = NSDictionary::dictionaryWith({{1257, slip}});
  for (auto [number, each] : slips->as<int, ListedPayslip>()) {
    EXPECT_EQ(number, 1257);
    EXPECT_EQ(&each, slip.get());
  }
  EXPECT_EQ(raised([&] {
              for (auto entry : rates->as<NSString, ListedPayslip>()) (void)entry;
            }),
            "NSInvalidArgumentException: an element is a NSDecimalNumber where a ListedPayslip is wanted");
}

TEST(Enumeration, ElementsOfASetAreTypedAndRemovedOnesAreSkipped) {
  auto codes = NSMutableSet::setWithObjects("BR", "0T", "D0");
  codes->removeObject("0T");
  std::string joined;
  for (const NSString& code : codes->as<NSString>()) joined += code.str() + ";";
  EXPECT_EQ(joined, "BR;D0;");
  EXPECT_EQ(codes->as<NSString>().size(), 2u);
  EXPECT_EQ(std::ranges::count(codes->as<NSString>(), "D0"), 1);
}

TEST(Enumeration, AWrongElementRaisesWhenItIsReached) {
  const auto mixed = NSArray::arrayWithObjects(make<ListedPayslip>(1_dec), "unpaid");
  int reached = 0;
  EXPECT_EQ(raised([&] { std::ranges::for_each(mixed->as<ListedPayslip>(), [&](ListedPayslip&) { ++reached; }); }),
            "NSInvalidArgumentException: an element is a NSString where a ListedPayslip is wanted");
  EXPECT_EQ(reached, 1);
  EXPECT_TRUE(
      raised([&] { (void)std::ranges::count(mixed->as<Decimal>(), 1); }).starts_with("NSInvalidArgumentException"));
  EXPECT_TRUE(raised([&] { (void)mixed->as<ListedPayslip>()[2]; }).starts_with("NSRangeException"));
}

TEST(Enumeration, AChangeMeanwhileRaisesAtTheNextStep) {
  const auto slips = threePayslips();
  const auto change = [&](auto&) { slips->addObject(make<ListedPayslip>()); };
  EXPECT_TRUE(
      raised([&] { std::ranges::for_each(slips->as<ListedPayslip>(), change); }).starts_with("NSGenericException"));
  const auto steps = {
      +[](NSArray::const_iterator& at) { ++at; },        +[](NSArray::const_iterator& at) { --at; },
      +[](NSArray::const_iterator& at) { at += 2; },     +[](NSArray::const_iterator& at) { at -= 1; },
      +[](NSArray::const_iterator& at) { (void)at[1]; }, +[](NSArray::const_iterator& at) { (void)(1 + at); }};
  for (const auto step : steps) {
    auto at = slips->begin() + 1;
    step(at);
    slips->addObject(1);
    EXPECT_TRUE(raised([&] { step(at); }).starts_with("NSGenericException"));
  }
}

TEST(Enumeration, NothingIsAllocatedForAnElement) {
  const auto slips = threePayslips();
  const auto rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}});
  Decimal sum;
  bool wasRefused = true;
  {
    const test::LittleMemory none(0);
#ifndef __clang__
    for (const ListedPayslip& slip : slips->as<ListedPayslip>() | std::views::filter(isPaid)) sum += slip.netPay();
#else
    for (const ListedPayslip& slip : slips->as<ListedPayslip>()) sum += slip.isPaid() ? slip.netPay() : 0;
#endif
    for (auto [name, rate] : rates->as<NSString, Decimal>()) sum += rate;
    wasRefused = none.wasRefused();
  }
  EXPECT_FALSE(wasRefused);
  EXPECT_EQ(sum, 1510.20_dec);
}

}  // namespace
}  // namespace norvik
