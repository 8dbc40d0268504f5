// From the keyboard to the totals: a text field with a formatter, bound to an observed payslip that validates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSArray+Norvik_DecimalNumber.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "tests/platform/appkit/BindingModels.h"
#include "tests/support/HeadlessTextField.h"

namespace norvik::test {
namespace {

/// A payslip's gross pay, its share of a month's payroll, and the observers.
class FieldToModel : public ::testing::Test {
 protected:
  FieldToModel() {
    formatter->setLocale(nk_defaultLocale());
    formatter->setMaximum(99999_dec);
    field->setFormatter(formatter);
  }
  void bindField(const NSString& tokens) {
    nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *slip, "grossPay",
                                         NSDictionary::dictionaryWith({{NKBind, tokens}}));
  }
  void replaceText(const NSString& text) {
    field->select({0, field->text().length()});
    field->type(text);
  }

  Ref<NKMonetaryTermDecimalNumberFormatter> formatter = make<NKMonetaryTermDecimalNumberFormatter>();
  Ref<BoundSlip> slip = make<BoundSlip>();
  Ref<HeadlessTextField> field = make<HeadlessTextField>();
};

TEST_F(FieldToModel, WhatIsTypedReachesTheModelItsObserversAndTheTotals) {
  auto other = make<BoundSlip>();
  other->setGrossPay(1000.255_dec);
  auto total = make<BoundSlip>();
  auto label = make<HeadlessTextField>();
  label->setFormatter(formatter);
  bind(*label, *total, "grossPay");

  auto payroll = make<BoundEmployee>();
  auto controller = FBKVOController::controllerWithObserver(*payroll);
  std::vector<std::string> changes;
  controller->observe_keyPath_options_block(
      slip, "grossPay", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld,
      [&](NSObject&, NSObject& object, const NSDictionary& change) {
        changes.push_back(change.objectForKey(FBKVONotificationKeyPathKey).description().str() + " " +
                          change.objectForKey(NSKeyValueChangeOldKey).description().str() + " " +
                          change.objectForKey(NSKeyValueChangeNewKey).description().str());
        const auto pays = NSArray::arrayWithObjects(object.valueForKey("grossPay"), other->grossPay());
        total->setGrossPay(
            nk_decimalNumberBySumming(*pays).decimalNumberByRoundingAccordingToBehavior(nk_scaleBehavior(2)));
      });

  bindField("validate");
  EXPECT_EQ(field->text(), "0.00");
  EXPECT_TRUE(field->editable());
  replaceText("1,250.5");
  EXPECT_EQ(slip->grossPay(), 0_dec) << "nothing is committed yet";
  ASSERT_TRUE(field->commit());
  EXPECT_EQ(slip->grossPay(), 1250.50_dec);
  EXPECT_EQ(Value(slip->grossPay()).kind(), Value::Kind::Decimal);
  EXPECT_EQ(field->text(), "1,250.50");
  EXPECT_EQ(field->value(), Value(1250.50_dec));
  EXPECT_EQ(field->value().kind(), Value::Kind::Decimal);
  EXPECT_THAT(changes, ::testing::ElementsAre("grossPay 0 1250.5"));
  EXPECT_EQ(total->grossPay(), 2250.76_dec);
  EXPECT_EQ(label->text(), "2,250.76");
}

TEST_F(FieldToModel, TheFormatterCapsWhatIsTyped) {
  bindField("validate");
  EXPECT_EQ(formatter->maxLength(), 10);  // 5 digits, a third of that, and 4
  field->select({0, field->text().length()});
  EXPECT_FALSE(field->type("12345678901"));
  EXPECT_EQ(field->text(), "1234567890");
  EXPECT_FALSE(field->commit()) << "more than the formatter's maximum";
  EXPECT_NE(field->whyUnreadable(), "");
  EXPECT_EQ(field->text(), "1234567890") << "the user may mend it";
  EXPECT_EQ(slip->grossPay(), 0_dec);
}

TEST_F(FieldToModel, WhatTheModelRefusesStaysInTheFieldWithAnError) {
  slip->setGrossPay(7_dec);
  bindField("validate");
  replaceText("-1");
  EXPECT_FALSE(field->commit());
  ASSERT_TRUE(field->error());
  EXPECT_EQ(field->error()->domain(), "Pay");
  EXPECT_EQ(slip->grossPay(), 7_dec);
  EXPECT_EQ(field->text(), "-1");
  field->cancel();
  EXPECT_EQ(field->text(), "7.00");
}

TEST_F(FieldToModel, WhatTheModelReplacesIsShown) {
  bindField("validate");
  replaceText("20000");
  ASSERT_TRUE(field->commit());
  EXPECT_EQ(slip->grossPay(), 10000_dec);
  EXPECT_EQ(field->text(), "10,000.00");
}

TEST_F(FieldToModel, AnEqualAmountIsNotWrittenButShownAfresh) {
  slip->setGrossPay(1250_dec);
  bindField("validate");
  auto watcher = make<CallingObserver>(nullptr);
  slip->addObserver(*watcher, "grossPay", NSKeyValueObservingOptionNew);
  replaceText("1250");
  ASSERT_TRUE(field->commit());
  EXPECT_EQ(watcher->calls, 0);
  EXPECT_EQ(field->text(), "1,250.00");
  slip->removeObserver(*watcher, "grossPay");
}

TEST_F(FieldToModel, AFieldThatUpdatesCommitsAtEachEditAndKeepsTheText) {
  bindField("validate;update");
  std::vector<Decimal> pays;
  auto watcher = make<CallingObserver>([&] { pays.push_back(slip->grossPay()); });
  slip->addObserver(*watcher, "grossPay", NSKeyValueObservingOptionNew);
  replaceText("12.5");
  EXPECT_THAT(pays, ::testing::ElementsAre(1_dec, 12_dec, 12.5_dec));  // "12." is still 12
  EXPECT_EQ(field->text(), "12.5");
  ASSERT_TRUE(field->commit());
  EXPECT_EQ(field->text(), "12.50");
  slip->removeObserver(*watcher, "grossPay");
}

TEST_F(FieldToModel, AReadOnlyFieldIsNotMadeEditable) {
  bindField("readOnly");
  EXPECT_FALSE(field->editable());
  EXPECT_FALSE(field->type("5"));
  EXPECT_EQ(field->text(), "0.00");
  slip->setGrossPay(5_dec);
  EXPECT_EQ(field->text(), "5.00");
}

TEST_F(FieldToModel, ClosuresStandBetweenFieldAndModel) {
  slip->setGrossPay(12000_dec);
  nk_bind_toObject_withKeyPath_block_reverseBlock(
      *field, NSValueBinding, *slip, "grossPay",
      [](const Value& yearly) -> Value { return yearly.as<Decimal>() / Decimal(12); },
      [](const Value& monthly) -> Value { return monthly.as<Decimal>() * Decimal(12); });
  EXPECT_EQ(field->text(), "1,000.00");
  replaceText("1,500");
  ASSERT_TRUE(field->commit());
  EXPECT_EQ(slip->grossPay(), 18000_dec);
}

TEST_F(FieldToModel, AModelThatGoesLeavesAFieldThatShowsItsLastValue) {
  slip->setGrossPay(3_dec);
  bindField("validate");
  slip = nullptr;
  EXPECT_EQ(field->text(), "3.00");
  replaceText("4");
  EXPECT_TRUE(field->commit());
  EXPECT_EQ(field->text(), "4.00");
}

}  // namespace
}  // namespace norvik::test
