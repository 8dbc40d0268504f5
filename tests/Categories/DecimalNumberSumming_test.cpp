#include "NorvikCore/Categories/NSArray+Norvik_DecimalNumber.h"
#include "NorvikCore/Categories/NSObject+Norvik_DecimalNumber.h"
#include "NorvikCore/Categories/NSSet+Norvik_DecimalNumber.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "tests/support/Decimals.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

using norvik::test::dec;

class Slip : public NSObject {
  NK_OBJECT(Slip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(int, bonus, setBonus)
  NK_PROPERTY(NSString, note, setNote)
};

/// Adds a key to the keys that are being summed, which is not allowed.
class Meddler : public NSObject {
  NK_OBJECT(Meddler, NSObject)
  NK_COMPUTED_PROPERTY(Decimal, pay)
  Decimal pay() const {
    keys->addObject("pay");
    return 1_dec;
  }
  Ref<NSMutableArray> keys;
};

}  // namespace

TEST(NSArrayNorvikDecimalNumber, HeaderExample) {
  EXPECT_EQ(nk_decimalNumberBySumming(*NSArray::arrayWith({1.10_dec, 2.205_dec})), 3.305_dec);
}

TEST(NSSetNorvikDecimalNumber, HeaderExample) {
  EXPECT_EQ(nk_decimalNumberBySumming(*NSSet::setWith({100_dec, 20_dec})), 120_dec);
}

TEST(NSObjectNorvikDecimalNumber, HeaderExample) {
  const auto slip = make<Slip>();
  slip->setGrossPay(100_dec);
  slip->setBonus(20);
  EXPECT_EQ(nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"grossPay", "bonus"})), 120_dec);
}

TEST(DecimalNumberSumming, AnArraysElementsAddUpWithoutRounding) {
  const Decimal sum = nk_decimalNumberBySumming(*NSArray::arrayWith({dec("1.10"), dec("2.205")}));
  EXPECT_EQ(sum, dec("3.305"));
  EXPECT_EQ(sum.stringValue(), "3.305");
  EXPECT_EQ(nk_decimalNumberBySumming(*NSArray::arrayWith({dec("0.5"), 1, 2.25, true})), dec("4.75"));
}

TEST(DecimalNumberSumming, ASetsMembersAddUp) {
  EXPECT_EQ(nk_decimalNumberBySumming(*NSSet::setWith({dec("100"), dec("20.00"), dec("20")})), dec("120"));
}

TEST(DecimalNumberSumming, NothingAddsUpToZero) {
  EXPECT_EQ(nk_decimalNumberBySumming(*NSArray::array()), 0);
  EXPECT_EQ(nk_decimalNumberBySumming(*NSSet::set()), 0);
  EXPECT_EQ(nk_decimalNumberBySummingValueForKey(*make<Slip>(), *NSArray::array()), 0);
}

TEST(DecimalNumberSumming, NotANumberMakesTheSumNotANumberAndOverflowRaises) {
  EXPECT_TRUE(nk_decimalNumberBySumming(*NSArray::arrayWith({dec("1"), Decimal::notANumber(), dec("2")})).isNaN());
  const Decimal greatest = Decimal::maximumDecimalNumber();
  EXPECT_RAISES((void)nk_decimalNumberBySumming(*NSArray::arrayWith({greatest, greatest})),
                "NSDecimalNumberOverflowException");
}

TEST(DecimalNumberSumming, AnElementThatIsNoNumberRaises) {
  EXPECT_RAISES((void)nk_decimalNumberBySumming(*NSArray::arrayWith({dec("1"), "2"})), "NSInvalidArgumentException");
  EXPECT_RAISES((void)nk_decimalNumberBySumming(*NSArray::arrayWith({Value::null()})), "NSInvalidArgumentException");
}

TEST(DecimalNumberSumming, AnObjectsValuesForTheKeysAddUp) {
  const auto slip = make<Slip>();
  slip->setGrossPay(100);
  slip->setBonus(20);
  EXPECT_EQ(nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"grossPay", "bonus"})), 120);
  EXPECT_EQ(nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"bonus", "bonus"})), 40);
  EXPECT_EQ(nk_decimalNumberBySummingValueForKey(*slip, *NSSet::setWith({"bonus", "bonus"})), 20);
  EXPECT_RAISES((void)nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"salary"})),
                "NSUnknownKeyException");
  EXPECT_RAISES((void)nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"note"})),
                "NSInvalidArgumentException");
}

TEST(DecimalNumberSumming, ADictionarysValuesForTheKeysAddUpAndAMissingOneRaises) {
  const auto slip = NSDictionary::dictionaryWith({{"grossPay", dec("100.50")}, {"bonus", 20}});
  EXPECT_EQ(nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"grossPay", "bonus"})), dec("120.50"));
  EXPECT_RAISES((void)nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"grossPay", "salary"})),
                "NSInvalidArgumentException");
}

TEST(DecimalNumberSumming, TheSumHasTheLongestFractionOfItsSummands) {
  EXPECT_EQ(nk_decimalNumberBySumming(*NSArray::arrayWith({dec("1.10"), dec("2.900")})).stringValue(), "4.000");
  EXPECT_EQ(nk_decimalNumberBySumming(*NSArray::array()).stringValue(), "0");
}

TEST(DecimalNumberSumming, KeysThatChangeDuringTheSumRaise) {
  const auto meddler = make<Meddler>();
  meddler->keys = NSMutableArray::arrayWith({"pay", "pay"});
  EXPECT_RAISES((void)nk_decimalNumberBySummingValueForKey(*meddler, *meddler->keys), "NSGenericException");
}
