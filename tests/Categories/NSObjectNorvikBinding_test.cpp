#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/platform/appkit/NSTableCellView.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/platform/appkit/BindingModels.h"
#include "tests/support/ExpectRaises.h"

namespace norvik::test {
namespace {

const NKTransformBlock pounds = [](const Value& pennies) -> Value { return pennies.as<Decimal>() / Decimal(100); };
const NKTransformBlock pennies = [](const Value& shown) -> Value { return shown.as<Decimal>() * Decimal(100); };

Ref<NSDictionary> tokens(const NSString& text) { return NSDictionary::dictionaryWith({{NKBind, text}}); }

NSString processed(const NSString& text) {
  const auto field = make<BoundField>();
  const auto options = nk_processBindOptions(*field, tokens(text));
  NSString all;
  for (const auto& [key, value] : *options) all = all + key.description() + "=" + value.description() + " ";
  return all;
}

TEST(NSObjectNorvikBinding, HeaderExample) {
  auto payslip = make<BoundSlip>();
  auto field = make<BoundField>();
  payslip->setGrossPay(1200_dec);
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(
      *field, NSValueBinding, *payslip, "grossPay", NSDictionary::dictionaryWith({{NKBind, "validate;update"}}),
      [](const Value& pay) -> Value { return pay.as<Decimal>() / Decimal(12); },
      [](const Value& shown) -> Value { return shown.as<Decimal>() * Decimal(12); });
  EXPECT_EQ(field->value(), Value(100_dec));
  Ref<NSError> error;
  EXPECT_TRUE(nk_updateBoundValue(*field, 110_dec, &error));
  EXPECT_EQ(payslip->grossPay(), 1320_dec);
  EXPECT_FALSE(error);
}

// Options.

TEST(NSObjectNorvikBinding, OptionsWithoutTheMarkerStayTheSame) {
  auto field = make<BoundField>();
  EXPECT_FALSE(nk_processBindOptions(*field, nullptr));
  const auto options = NSDictionary::dictionaryWith({{NSValidatesImmediatelyBindingOption, true}});
  EXPECT_EQ(nk_processBindOptions(*field, options), options);
}

TEST(NSObjectNorvikBinding, EachTokenSetsItsOptions) {
  EXPECT_EQ(processed("readOnly"), "NSConditionallySetsEditable=0 NSConditionallySetsEnabled=0 ");
  EXPECT_EQ(processed("validate"), "NSValidatesImmediately=1 ");
  EXPECT_EQ(processed("update"), "NSContinuouslyUpdatesValue=1 ");
}

TEST(NSObjectNorvikBinding, TokensAreJoinedBySemicolons) {
  EXPECT_EQ(processed("readOnly;validate"),
            "NSConditionallySetsEditable=0 NSConditionallySetsEnabled=0 NSValidatesImmediately=1 ");
}

TEST(NSObjectNorvikBinding, ABlankAfterTheSemicolonIsPartOfTheToken) {
  EXPECT_EQ(processed("readOnly; validate"), "NSConditionallySetsEditable=0 NSConditionallySetsEnabled=0 ");
}

TEST(NSObjectNorvikBinding, EmptyAndUnknownTokensAreIgnored) {
  EXPECT_EQ(processed(""), "");
  EXPECT_EQ(processed(";;update;;"), "NSContinuouslyUpdatesValue=1 ");
  EXPECT_EQ(processed("Validate;READONLY;writeOnly"), "");
}

TEST(NSObjectNorvikBinding, TokensOverwriteAndTheGivenOptionsStayAsTheyWere) {
  auto field = make<BoundField>();
  const auto given = NSMutableDictionary::dictionaryWith(
      {{NKBind, "validate"}, {NSValidatesImmediatelyBindingOption, false}, {"other", 1}});
  const auto result = nk_processBindOptions(*field, given);
  EXPECT_EQ(result->objectForKey(NSValidatesImmediatelyBindingOption), Value(true));
  EXPECT_EQ(result->objectForKey("other"), Value(1));
  EXPECT_TRUE(result->objectForKey(NKBind).isAbsent());
  EXPECT_EQ(given->objectForKey(NKBind), Value("validate"));
  EXPECT_EQ(given->objectForKey(NSValidatesImmediatelyBindingOption), Value(false));
}

TEST(NSObjectNorvikBinding, OnlyATextHoldsTokens) {
  auto field = make<BoundField>();
  EXPECT_RAISES(static_cast<void>(nk_processBindOptions(*field, NSDictionary::dictionaryWith({{NKBind, 1}}))),
                "NSInvalidArgumentException");
  EXPECT_RAISES(
      static_cast<void>(nk_processBindOptions(*field, NSDictionary::dictionaryWith({{NKBind, Value::null()}}))),
      "NSInvalidArgumentException");
}

// Binding.

TEST(NSObjectNorvikBinding, AnUnknownTokenIsIgnoredAndNamedOnTheConsole) {
  const auto field = make<BoundField>();
  const kernel::SystemLogCapture console;
  EXPECT_EQ(nk_processBindOptions(*field, tokens("Validate;; validate;validate"))->count(), 1u);
  const char* end = "\" is not one of the tokens \"readOnly\", \"validate\" and \"update\"; it is ignored";
  EXPECT_THAT(console.lines(), ::testing::ElementsAre(std::string("NKBind: \"Validate") + end,
                                                      std::string("NKBind: \" validate") + end));
}

TEST(NSObjectNorvikBinding, BindsWithProcessedOptions) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *slip, "grossPay", tokens("validate;readOnly"));
  const auto options = infoForBinding(*field, NSValueBinding)->objectForKey(NSOptionsKey).as<Ref<NSDictionary>>();
  EXPECT_TRUE(options->objectForKey(NKBind).isAbsent());
  EXPECT_EQ(options->objectForKey(NSValidatesImmediatelyBindingOption), Value(true));
  EXPECT_FALSE(field->editable());
  field->setValue(-5_dec);
  EXPECT_EQ(slip->grossPay(), 0_dec);
}

TEST(NSObjectNorvikBinding, OneClosureGoesOneWay) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(1250_dec);
  auto field = make<BoundField>();
  nk_bind_toObject_withKeyPath_block(*field, NSValueBinding, *slip, "grossPay", pounds);
  EXPECT_EQ(field->value(), Value(12.50_dec));
  EXPECT_FALSE(field->editable());
  field->setValue(1);
  EXPECT_EQ(slip->grossPay(), 1250_dec);
}

TEST(NSObjectNorvikBinding, TwoClosuresGoBothWays) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(1250_dec);
  auto field = make<BoundField>();
  nk_bind_toObject_withKeyPath_block_reverseBlock(*field, NSValueBinding, *slip, "grossPay", pounds, pennies);
  EXPECT_EQ(field->value(), Value(12.50_dec));
  EXPECT_TRUE(field->editable());
  field->setValue(13_dec);
  EXPECT_EQ(slip->grossPay(), 1300_dec);
}

TEST(NSObjectNorvikBinding, AClosureTakesThePlaceOfATransformerAndKeepsTheOtherOptions) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(1250_dec);
  auto field = make<BoundField>();
  const auto given =
      NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, make<NSValueTransformer>()}, {NKBind, "update"}});
  nk_bind_toObject_withKeyPath_options_block(*field, NSValueBinding, *slip, "grossPay", given, pounds);
  EXPECT_EQ(field->value(), Value(12.50_dec));
  const auto options = infoForBinding(*field, NSValueBinding)->objectForKey(NSOptionsKey).as<Ref<NSDictionary>>();
  EXPECT_EQ(options->objectForKey(NSContinuouslyUpdatesValueBindingOption), Value(true));
  EXPECT_EQ(options->objectForKey(NSValueTransformerBindingOption).classObject(),
            NKBlockValueTransformer::staticClass());
}

TEST(NSObjectNorvikBinding, WithoutClosuresTheOptionsAreLeftAsTheyAre) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(1250_dec);
  auto field = make<BoundField>();
  const auto given = NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, make<PenniesTransformer>()}});
  nk_bind_toObject_withKeyPath_options_block(*field, NSValueBinding, *slip, "grossPay", given, nullptr);
  EXPECT_EQ(field->value(), Value(12.50_dec));
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(*field, NSValueBinding, *slip, "grossPay", given, nullptr,
                                                          nullptr);
  EXPECT_EQ(field->value(), Value(12.50_dec));
  nk_bind_toObject_withKeyPath_block(*field, NSValueBinding, *slip, "grossPay", nullptr);
  EXPECT_EQ(field->value(), Value(1250_dec));
}

TEST(NSObjectNorvikBinding, ADirectionWithoutItsClosureRaisesWhenItIsUsed) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  EXPECT_RAISES(
      nk_bind_toObject_withKeyPath_block_reverseBlock(*field, NSValueBinding, *slip, "grossPay", nullptr, pennies),
      "NSInvalidArgumentException");
  EXPECT_FALSE(infoForBinding(*field, NSValueBinding));
  nk_bind_toObject_withKeyPath_block_reverseBlock(*field, NSValueBinding, *slip, "grossPay", pounds, nullptr);
  EXPECT_RAISES(field->setValue(1), "NSInvalidArgumentException");
}

// Writing a value back.

TEST(NSObjectNorvikBinding, WithoutAValueBindingNothingIsUpdated) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind_toObject_withKeyPath_options(
      *field, "enabled", *slip, "note",
      NSDictionary::dictionaryWith(
          {{NSValueTransformerBindingOption,
            NKBlockValueTransformer::valueTransformerWithBlock([](const Value&) { return Value(true); })}}));
  Ref<NSError> error;
  EXPECT_FALSE(nk_updateBoundValue(*field, 5, &error));
  EXPECT_FALSE(error);
  EXPECT_TRUE(field->value().isAbsent());
  EXPECT_TRUE(slip->note().isAbsent());
}

TEST(NSObjectNorvikBinding, AnEqualValueIsTrueAndWritesNothing) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  slip->setGrossPay(5_dec);
  bind(*field, *slip, "grossPay");
  auto watcher = make<CallingObserver>(nullptr);
  slip->addObserver(*watcher, "grossPay", NSKeyValueObservingOptionNew);
  EXPECT_TRUE(nk_updateBoundValue(*field, 5.00_dec));
  EXPECT_EQ(watcher->calls, 0);
  EXPECT_TRUE(nk_updateBoundValue(*field, 6));
  EXPECT_EQ(watcher->calls, 1);
  EXPECT_EQ(slip->grossPay(), 6_dec);
  slip->removeObserver(*watcher, "grossPay");
}

TEST(NSObjectNorvikBinding, AnAbsentValueIsWrittenOverAnAbsentOne) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "note");
  auto watcher = make<CallingObserver>(nullptr);
  slip->addObserver(*watcher, "note", NSKeyValueObservingOptionNew);
  EXPECT_TRUE(nk_updateBoundValue(*field, Value()));
  EXPECT_EQ(watcher->calls, 1);
  slip->removeObserver(*watcher, "note");
}

TEST(NSObjectNorvikBinding, ARefusedValueIsNotWrittenAndGivesTheError) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(5_dec);
  auto field = make<BoundField>();
  nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *slip, "grossPay", tokens("validate"));
  Ref<NSError> error;
  EXPECT_FALSE(nk_updateBoundValue(*field, -1, &error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), "Pay");
  EXPECT_EQ(slip->grossPay(), 5_dec);
  EXPECT_FALSE(nk_updateBoundValue(*field, -1));
}

TEST(NSObjectNorvikBinding, WithoutTheOptionNothingIsValidated) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSValidatesImmediatelyBindingOption, Value::null()}}));
  EXPECT_TRUE(nk_updateBoundValue(*field, -1));
  EXPECT_EQ(slip->grossPay(), -1_dec);
}

TEST(NSObjectNorvikBinding, ValidationMayReplaceTheValueAndTheViewShowsIt) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *slip, "grossPay", tokens("validate"));
  EXPECT_TRUE(nk_updateBoundValue(*field, 20000));
  EXPECT_EQ(slip->grossPay(), 10000_dec);
  EXPECT_EQ(field->value(), Value(10000));
}

TEST(NSObjectNorvikBinding, TheTransformerGoesBackByNameOrByObject) {
  NSValueTransformer::setValueTransformer_forName(make<PenniesTransformer>(), "NSObjectNorvikBinding pennies");
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay",
       NSDictionary::dictionaryWith({{NSValueTransformerNameBindingOption, "NSObjectNorvikBinding pennies"},
                                     {NSValueTransformerBindingOption, Value::null()}}));
  EXPECT_TRUE(nk_updateBoundValue(*field, 3));
  EXPECT_EQ(slip->grossPay(), 300_dec);
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(
      *field, NSValueBinding, *slip, "grossPay",
      NSDictionary::dictionaryWith({{NSValueTransformerNameBindingOption, "NSObjectNorvikBinding pennies"}}),
      [](const Value& v) { return v; }, [](const Value& v) -> Value { return v.as<Decimal>() + Decimal(1); });
  EXPECT_TRUE(nk_updateBoundValue(*field, 3));
  EXPECT_EQ(slip->grossPay(), 4_dec);
}

TEST(NSObjectNorvikBinding, AOneWayTransformerCannotPushBack) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  nk_bind_toObject_withKeyPath_block(*field, NSValueBinding, *slip, "grossPay", pounds);
  EXPECT_RAISES(nk_updateBoundValue(*field, 1), "NSInvalidArgumentException");
  EXPECT_EQ(slip->grossPay(), 0_dec);
}

TEST(NSObjectNorvikBinding, AValueWhoseModelIsGoneIsNotUpdated) {
  auto field = make<BoundField>();
  bind(*field, *make<BoundSlip>(), "grossPay");
  EXPECT_FALSE(nk_updateBoundValue(*field, 1));
}

// Moving bindings.

TEST(NSObjectNorvikBinding, BindingsMoveFromOneViewToAnother) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(700_dec);
  slip->setNote(true);
  auto from = make<BoundField>(), to = make<BoundField>();
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(*from, NSValueBinding, *slip, "grossPay", tokens("validate"),
                                                          pounds, pennies);
  bind_toObject_withKeyPath_options(*from, NSEnabledBinding, *slip, "note", nullptr);
  const auto options = infoForBinding(*from, NSValueBinding)->objectForKey(NSOptionsKey);
  nk_transferBindingsTo(*from, *to, *NSArray::arrayWithObjects(NSValueBinding, "not bound", NSEnabledBinding));
  EXPECT_FALSE(infoForBinding(*from, NSValueBinding));
  EXPECT_FALSE(infoForBinding(*from, NSEnabledBinding));
  EXPECT_EQ(infoForBinding(*to, NSValueBinding)->objectForKey(NSOptionsKey), options);
  EXPECT_EQ(to->value(), Value(7_dec));
  EXPECT_TRUE(to->enabled());
  slip->setGrossPay(800_dec);
  EXPECT_EQ(to->value(), Value(8_dec));
  EXPECT_EQ(from->value(), Value(7_dec));
}

TEST(NSObjectNorvikBinding, OptionsThatMoveAreNotProcessedAgain) {
  auto slip = make<BoundSlip>();
  auto from = make<BoundField>(), to = make<BoundField>();
  bind(*from, *slip, "grossPay", tokens("validate"));
  nk_transferBindingsTo(*from, *to, *NSArray::arrayWithObjects(NSValueBinding));
  EXPECT_EQ(infoForBinding(*to, NSValueBinding)->objectForKey(NSOptionsKey), Value(tokens("validate")));
}

TEST(NSObjectNorvikBinding, ATargetThatCannotBeBoundLeavesTheReceiverBound) {
  auto slip = make<BoundSlip>();
  auto from = make<BoundField>();
  auto to = make<BoundEmployee>();  // has no key "value"
  bind(*from, *slip, "grossPay");
  EXPECT_RAISES(nk_transferBindingsTo(*from, *to, *NSArray::arrayWithObjects(NSValueBinding)), "NSUnknownKeyException");
  slip->setGrossPay(5_dec);
  EXPECT_EQ(from->value(), Value(5_dec));
}

TEST(NSObjectNorvikBinding, AReceiverThatIsItsOwnTargetEndsUnbound) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  nk_transferBindingsTo(*field, *field, *NSArray::arrayWithObjects(NSValueBinding));
  EXPECT_FALSE(infoForBinding(*field, NSValueBinding));
  EXPECT_FALSE(slip->isObserved());
}

TEST(NSObjectNorvikBinding, WithoutBindingsNothingMoves) {
  auto from = make<BoundField>(), to = make<BoundField>();
  nk_transferBindingsTo(*from, *to, *NSArray::arrayWithObjects(NSValueBinding));
  nk_transferBindingsTo(*from, *to, *NSArray::array());
  EXPECT_FALSE(infoForBinding(*to, NSValueBinding));
}

// The observed object.

TEST(NSObjectNorvikBinding, TheObservedObjectIsFound) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  EXPECT_TRUE(nk_observedObjectForBinding(*field, NSValueBinding, true).isAbsent());
  bind(*field, *slip, "grossPay");
  EXPECT_EQ(nk_observedObjectForBinding(*field, NSValueBinding, false).object(), slip.get());
  EXPECT_EQ(nk_observedObjectForBinding(*field, NSValueBinding, true).object(), slip.get());
}

TEST(NSObjectNorvikBinding, OfATableCellTheObjectValueIsFoundWhereAskedFor) {
  auto slip = make<BoundSlip>();
  auto cell = make<NSTableCellView>();
  cell->setObjectValue(slip);
  auto field = make<BoundField>();
  bind(*field, *cell, "objectValue.grossPay");
  EXPECT_EQ(nk_observedObjectForBinding(*field, NSValueBinding, false).object(), cell.get());
  EXPECT_EQ(nk_observedObjectForBinding(*field, NSValueBinding, true).object(), slip.get());
  cell->setObjectValue(Value());
  EXPECT_TRUE(nk_observedObjectForBinding(*field, NSValueBinding, true).isAbsent());
}

}  // namespace
}  // namespace norvik::test
