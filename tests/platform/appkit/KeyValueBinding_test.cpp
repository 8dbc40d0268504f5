#include "NorvikCore/platform/appkit/KeyValueBinding.h"

#include <gtest/gtest.h>

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "tests/platform/appkit/BindingModels.h"
#include "tests/support/ExpectRaises.h"

#include <algorithm>

namespace norvik::test {
namespace {

class ShoutingTransformer : public NSValueTransformer {
  NK_OBJECT(ShoutingTransformer, NSValueTransformer)
  Value transformedValue(const Value& text) override { return text.description() + "!"; }
};

/// Returns a greater number in both directions: two of them in a cycle never agree.
class RisingTransformer : public NSValueTransformer {
  NK_OBJECT(RisingTransformer, NSValueTransformer)
  static bool allowsReverseTransformation() { return true; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  Value transformedValue(const Value& number) override { return number.as<Decimal>() + Decimal(1); }
  Value reverseTransformedValue(const Value& number) override { return number.as<Decimal>() + Decimal(1); }
};

/// Reads its paths itself: the gross pay with a bonus of 100.
class SlipWithBonus : public BoundSlip {
  NK_OBJECT(SlipWithBonus, BoundSlip)
  [[nodiscard]] Value valueForKeyPath(const NSString& path) const override {
    const Value value = BoundSlip::valueForKeyPath(path);
    return path == "grossPay" ? Value(value.as<Decimal>() + 100_dec) : value;
  }
};

TEST(KeyValueBinding, HeaderExample) {
  auto payslip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind_toObject_withKeyPath_options(*field, NSValueBinding, *payslip, "grossPay", nullptr);
  payslip->setGrossPay(1250_dec);
  EXPECT_EQ(field->value(), Value(1250_dec));
  field->setValue(Value(1300_dec));
  EXPECT_EQ(payslip->grossPay(), 1300_dec);
  EXPECT_EQ(infoForBinding(*field, NSValueBinding)->objectForKey(NSObservedKeyPathKey), Value("grossPay"));
  unbind(*field, NSValueBinding);
  EXPECT_FALSE(infoForBinding(*field, NSValueBinding));
}

TEST(KeyValueBinding, TheReceiverGetsThePresentValueAtOnce) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(900_dec);
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  EXPECT_EQ(field->value(), Value(900_dec));
}

TEST(KeyValueBinding, AnyKeyOfTheReceiverCanBeBound) {
  auto slip = make<BoundSlip>();
  slip->setNote(true);
  auto field = make<BoundField>();
  bind_toObject_withKeyPath_options(*field, "enabled", *slip, "note", nullptr);
  EXPECT_TRUE(field->enabled());
  slip->setNote(false);
  EXPECT_FALSE(field->enabled());
}

TEST(KeyValueBinding, AClassThatReadsItsPathsItselfIsAsked) {
  auto slip = make<SlipWithBonus>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  EXPECT_EQ(field->value(), Value(100_dec));
  slip->setGrossPay(900_dec);
  EXPECT_EQ(field->value(), Value(1000_dec));
}

TEST(KeyValueBinding, ADependentKeyIsFollowed) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "netPay");
  slip->setGrossPay(1000_dec);
  slip->setTax(200_dec);
  EXPECT_EQ(field->value(), Value(800_dec));
}

TEST(KeyValueBinding, AChangeAnywhereAlongThePathIsFollowed) {
  auto slip = make<BoundSlip>();
  auto sian = make<BoundEmployee>(), owen = make<BoundEmployee>();
  sian->setName("Sian");
  owen->setName("Owen");
  slip->setEmployee(sian);
  auto field = make<BoundField>();
  bind(*field, *slip, "employee.name");
  EXPECT_EQ(field->value(), Value("Sian"));
  slip->setEmployee(owen);
  EXPECT_EQ(field->value(), Value("Owen"));
  owen->setName("Owain");
  EXPECT_EQ(field->value(), Value("Owain"));
  sian->setName("Elin");
  EXPECT_EQ(field->value(), Value("Owain"));
  field->setValue("Rhys");
  EXPECT_EQ(owen->name(), NSString("Rhys"));
}

TEST(KeyValueBinding, APathThatBreaksOffGivesAnAbsentValueAndTakesNone) {
  auto slip = make<BoundSlip>();
  auto sian = make<BoundEmployee>();
  sian->setName("Sian");
  slip->setEmployee(sian);
  auto field = make<BoundField>();
  bind(*field, *slip, "employee.name");
  slip->setEmployee(nullptr);
  EXPECT_TRUE(field->value().isAbsent());
  field->setValue("Nobody");
  EXPECT_FALSE(slip->employee());
  EXPECT_EQ(field->value(), Value("Nobody"));
  slip->setEmployee(sian);
  EXPECT_EQ(field->value(), Value("Sian"));
}

TEST(KeyValueBinding, AnAbsentValueRaisesWhereTheReceiverCannotHaveIt) {
  auto slip = make<BoundSlip>();
  auto other = make<BoundSlip>();
  EXPECT_RAISES(bind_toObject_withKeyPath_options(*other, "grossPay", *slip, "note", nullptr),
                "NSInvalidArgumentException");
  EXPECT_FALSE(infoForBinding(*other, "grossPay"));
  slip->setNote(5);
  EXPECT_EQ(other->grossPay(), 0_dec);  // not bound, because binding raised
}

TEST(KeyValueBinding, AnEqualValueIsNotSetAgain) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  auto watcher = make<CallingObserver>(nullptr);
  slip->setGrossPay(5_dec);
  bind(*field, *slip, "grossPay");
  slip->addObserver(*watcher, "grossPay", NSKeyValueObservingOptionNew);
  EXPECT_EQ(field->sets, 1);
  slip->setGrossPay(5.00_dec);  // announced, but equal
  EXPECT_EQ(field->sets, 1);
  EXPECT_EQ(watcher->calls, 1);
  field->setValue(5);
  EXPECT_EQ(watcher->calls, 1);  // the model was not set
  slip->removeObserver(*watcher, "grossPay");
}

TEST(KeyValueBinding, AChangeDoesNotComeBack) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  auto watcher = make<CallingObserver>(nullptr);
  bind(*field, *slip, "grossPay");
  slip->addObserver(*watcher, "grossPay", NSKeyValueObservingOptionNew);
  field->sets = 0;
  slip->setGrossPay(7_dec);
  EXPECT_EQ(field->sets, 1);
  EXPECT_EQ(watcher->calls, 1);
  field->setValue(8_dec);
  EXPECT_EQ(field->sets, 2);  // only the test's own set was added
  EXPECT_EQ(watcher->calls, 2);
  slip->removeObserver(*watcher, "grossPay");
}

TEST(KeyValueBinding, WhatTheReceiverMakesOfAValueIsNotCarriedBack) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  field->adjust = [](const Value& value) { return Value(std::min(value.as<Decimal>(), 100_dec)); };
  bind(*field, *slip, "grossPay");
  slip->setGrossPay(250_dec);
  EXPECT_EQ(field->value(), Value(100_dec));
  EXPECT_EQ(slip->grossPay(), 250_dec);
}

TEST(KeyValueBinding, AReadOnlyKeyIsOneWay) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "netPay");
  field->setValue(12_dec);
  EXPECT_EQ(field->value(), Value(12_dec));
  slip->setGrossPay(20_dec);
  EXPECT_EQ(field->value(), Value(20_dec));
}

TEST(KeyValueBinding, AMutableDictionaryIsFollowedAndSetByKey) {
  auto rates = NSMutableDictionary::dictionaryWith({{"basic", 0.20_dec}});
  auto field = make<BoundField>();
  bind(*field, *rates, "basic");
  rates->setValue_forKey(0.25_dec, "basic");
  EXPECT_EQ(field->value(), Value(0.25_dec));
  field->setValue(0.30_dec);
  EXPECT_EQ(rates->objectForKey("basic"), Value(0.30_dec));
}

TEST(KeyValueBinding, ADictionaryThatDoesNotChangeIsOneWay) {
  auto rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}});
  auto field = make<BoundField>();
  bind(*field, *rates, "basic");
  field->setValue(1_dec);
  EXPECT_EQ(rates->objectForKey("basic"), Value(0.20_dec));
  EXPECT_FALSE(field->editable());
}

// Transformers.

TEST(KeyValueBinding, ATransformerStandsBetweenTheSides) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(1250_dec);
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay",
       NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, make<PenniesTransformer>()}}));
  EXPECT_EQ(field->value(), Value(12.50_dec));
  field->setValue(20_dec);
  EXPECT_EQ(slip->grossPay(), 2000_dec);
}

TEST(KeyValueBinding, ATransformerIsFoundByName) {
  NSValueTransformer::setValueTransformer_forName(make<PenniesTransformer>(), "KeyValueBinding pennies");
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay",
       NSDictionary::dictionaryWith({{NSValueTransformerNameBindingOption, "KeyValueBinding pennies"}}));
  field->setValue(3_dec);
  EXPECT_EQ(slip->grossPay(), 300_dec);
}

TEST(KeyValueBinding, ATransformerGoesBeforeOneByName) {
  auto slip = make<BoundSlip>();
  slip->setNote("a");
  auto field = make<BoundField>();
  bind(*field, *slip, "note",
       NSDictionary::dictionaryWith({{NSValueTransformerNameBindingOption, "PenniesTransformer"},
                                     {NSValueTransformerBindingOption, make<ShoutingTransformer>()}}));
  EXPECT_EQ(field->value(), Value("a!"));
}

TEST(KeyValueBinding, TheNullMarkerNamesNoTransformer) {
  auto slip = make<BoundSlip>();
  slip->setNote("a");
  auto field = make<BoundField>();
  bind(*field, *slip, "note",
       NSDictionary::dictionaryWith(
           {{NSValueTransformerNameBindingOption, Value::null()}, {NSValueTransformerBindingOption, Value::null()}}));
  EXPECT_EQ(field->value(), Value("a"));
}

TEST(KeyValueBinding, AnUnknownTransformerRaisesAndTheFormerBindingStays) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  EXPECT_RAISES(
      bind(*field, *slip, "tax", NSDictionary::dictionaryWith({{NSValueTransformerNameBindingOption, "nobody"}})),
      "NSInvalidArgumentException");
  EXPECT_RAISES(bind(*field, *slip, "tax", NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, slip}})),
                "NSInvalidArgumentException");
  slip->setGrossPay(4_dec);
  EXPECT_EQ(field->value(), Value(4_dec));
}

TEST(KeyValueBinding, AOneWayTransformerCarriesNothingBack) {
  auto slip = make<BoundSlip>();
  slip->setNote("pay");
  auto field = make<BoundField>();
  bind(*field, *slip, "note",
       NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, make<ShoutingTransformer>()}}));
  EXPECT_EQ(field->value(), Value("pay!"));
  field->setValue("other");
  EXPECT_EQ(slip->note(), Value("pay"));
}

TEST(KeyValueBinding, TheReceiverShowsWhatTheObservedObjectMadeOfAValue) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSValidatesImmediatelyBindingOption, true}}));
  field->setValue(20000_dec);
  EXPECT_EQ(slip->grossPay(), 10000_dec);
  EXPECT_EQ(field->value(), Value(10000_dec));
}

// Options.

TEST(KeyValueBinding, WhatValidationRefusesIsNotWrittenAndTheReceiverGoesBack) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(10_dec);
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSValidatesImmediatelyBindingOption, true}}));
  field->setValue(-1_dec);
  EXPECT_EQ(slip->grossPay(), 10_dec);
  EXPECT_EQ(field->value(), Value(10_dec));
}

TEST(KeyValueBinding, WithoutTheOptionNothingIsValidated) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  field->setValue(-1_dec);
  EXPECT_EQ(slip->grossPay(), -1_dec);
}

TEST(KeyValueBinding, EditableSaysWhetherChangesCanBeWritten) {
  auto slip = make<BoundSlip>();
  const auto editableWhenBoundTo = [&](const NSString& path, const Ref<NSDictionary>& options) {
    auto field = make<BoundField>();
    bind(*field, *slip, path, options);
    return field->editable();
  };
  EXPECT_TRUE(editableWhenBoundTo("grossPay", nullptr));
  EXPECT_FALSE(editableWhenBoundTo("netPay", nullptr));
  EXPECT_FALSE(editableWhenBoundTo("employee.name", nullptr)) << "there is no employee";
  EXPECT_FALSE(editableWhenBoundTo(
      "note", NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, make<ShoutingTransformer>()}})));
  EXPECT_FALSE(editableWhenBoundTo("grossPay",
                                   NSDictionary::dictionaryWith({{NSConditionallySetsEditableBindingOption, false}})));
}

TEST(KeyValueBinding, EditableFollowsAPathWhateverStandsBetweenItsFullStops) {
  const NSString half = NSString::fromCodePoint(0xD83D);
  auto slips = NSMutableDictionary::dictionary();
  slips->setObject(make<BoundSlip>(), half);
  auto field = make<BoundField>();
  bind(*field, *slips, half + ".grossPay");
  EXPECT_TRUE(field->editable());
  field->setValue(500_dec);
  EXPECT_EQ(slips->objectForKey(half).object<BoundSlip>()->grossPay(), 500);
}

TEST(KeyValueBinding, EditableFollowsThePath) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "employee.name");
  EXPECT_FALSE(field->editable());
  slip->setEmployee(make<BoundEmployee>());
  EXPECT_TRUE(field->editable());
}

TEST(KeyValueBinding, AnEditableThatIsBoundItselfIsLeftAlone) {
  auto slip = make<BoundSlip>();
  slip->setNote(false);
  auto field = make<BoundField>();
  bind_toObject_withKeyPath_options(*field, NSEditableBinding, *slip, "note", nullptr);
  bind(*field, *slip, "grossPay");
  EXPECT_FALSE(field->editable());
  EXPECT_EQ(slip->note(), Value(false));
}

TEST(KeyValueBinding, EnabledIsSetOnlyWhereAskedFor) {
  auto slip = make<BoundSlip>();
  auto plain = make<BoundField>(), asked = make<BoundField>();
  bind(*plain, *slip, "grossPay");
  bind(*asked, *slip, "grossPay", NSDictionary::dictionaryWith({{NSConditionallySetsEnabledBindingOption, true}}));
  EXPECT_FALSE(plain->enabled());
  EXPECT_TRUE(asked->enabled());
}

TEST(KeyValueBinding, TheInfoHasObjectPathAndOptions) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSContinuouslyUpdatesValueBindingOption, true}}));
  const auto info = infoForBinding(*field, NSValueBinding);
  EXPECT_EQ(info->objectForKey(NSObservedObjectKey).object(), slip.get());
  EXPECT_EQ(info->objectForKey(NSObservedKeyPathKey), Value("grossPay"));
  EXPECT_EQ(info->objectForKey(NSOptionsKey),
            Value(NSDictionary::dictionaryWith({{NSContinuouslyUpdatesValueBindingOption, true}})));
  bind(*field, *slip, "tax");
  EXPECT_EQ(infoForBinding(*field, NSValueBinding)->objectForKey(NSOptionsKey), Value(NSDictionary::dictionary()));
}

TEST(KeyValueBinding, OptionsAreCopied) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  auto options = NSMutableDictionary::dictionary();
  bind(*field, *slip, "grossPay", options);
  options->setObject(true, NSValidatesImmediatelyBindingOption);
  field->setValue(-1_dec);
  EXPECT_EQ(slip->grossPay(), -1_dec);
}

// Binding again, and ending.

TEST(KeyValueBinding, BindingAKeyAgainEndsTheFormerBinding) {
  auto first = make<BoundSlip>(), second = make<BoundSlip>();
  first->setGrossPay(1_dec);
  second->setGrossPay(2_dec);
  auto field = make<BoundField>();
  bind(*field, *first, "grossPay");
  bind(*field, *second, "grossPay");
  EXPECT_EQ(first->grossPay(), 1_dec);
  EXPECT_EQ(field->value(), Value(2_dec));
  field->setValue(3_dec);
  EXPECT_EQ(first->grossPay(), 1_dec);
  first->setGrossPay(9_dec);
  EXPECT_EQ(field->value(), Value(3_dec));
  EXPECT_FALSE(first->isObserved());
}

TEST(KeyValueBinding, AfterUnbindingNeitherSideFollows) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  slip->setGrossPay(1_dec);
  bind(*field, *slip, "grossPay");
  unbind(*field, NSValueBinding);
  slip->setGrossPay(2_dec);
  EXPECT_EQ(field->value(), Value(1_dec));
  field->setValue(3_dec);
  EXPECT_EQ(slip->grossPay(), 2_dec);
  EXPECT_FALSE(slip->isObserved());
  EXPECT_FALSE(field->isObserved());
}

TEST(KeyValueBinding, UnbindingWhatIsNotBoundDoesNothing) {
  auto field = make<BoundField>();
  unbind(*field, NSValueBinding);
  unbind(*field, "no such key");
  EXPECT_FALSE(infoForBinding(*field, NSValueBinding));
}

TEST(KeyValueBinding, UnknownKeysRaiseAndBindNothing) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  EXPECT_RAISES(bind(*field, *slip, "grosPay"), "NSUnknownKeyException");
  EXPECT_RAISES(bind_toObject_withKeyPath_options(*field, "valu", *slip, "grossPay", nullptr), "NSUnknownKeyException");
  EXPECT_FALSE(slip->isObserved());
  EXPECT_FALSE(infoForBinding(*field, NSValueBinding));
}

// Several bindings.

TEST(KeyValueBinding, SeveralViewsOfOneModelShowTheSame) {
  auto slip = make<BoundSlip>();
  auto one = make<BoundField>(), two = make<BoundField>();
  bind(*one, *slip, "grossPay");
  bind(*two, *slip, "grossPay");
  one->setValue(5_dec);
  EXPECT_EQ(two->value(), Value(5_dec));
  EXPECT_EQ(one->sets, 2);  // once while binding, once by the test
}

TEST(KeyValueBinding, BindingsChain) {
  auto slip = make<BoundSlip>();
  auto one = make<BoundField>(), two = make<BoundField>();
  bind(*one, *slip, "grossPay");
  bind(*two, *one, "value");
  slip->setGrossPay(6_dec);
  EXPECT_EQ(two->value(), Value(6_dec));
  two->setValue(7_dec);
  EXPECT_EQ(slip->grossPay(), 7_dec);
}

TEST(KeyValueBinding, ACircleOfBindingsSettles) {
  auto one = make<BoundField>(), two = make<BoundField>();
  one->setValue(1);
  two->setValue(2);
  bind(*one, *two, "value");
  bind(*two, *one, "value");
  one->setValue(3);
  EXPECT_EQ(two->value(), Value(3));
  two->setValue(4);
  EXPECT_EQ(one->value(), Value(4));
}

TEST(KeyValueBinding, ACircleThatNeverAgreesRaises) {
  auto one = make<BoundField>(), two = make<BoundField>();
  one->setValue(1);
  bind(*two, *one, "value",
       NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, make<RisingTransformer>()}}));
  EXPECT_RAISES(bind(*one, *two, "value",
                     NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, make<RisingTransformer>()}})),
                "NSInternalInconsistencyException");
  EXPECT_FALSE(infoForBinding(*one, NSValueBinding));
}

// Callbacks that change things.

TEST(KeyValueBinding, AnObserverThatChangesTheModelAgainIsFollowed) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  auto rounder = make<CallingObserver>([&] {
    if (field->value() == Value(1.5_dec)) slip->setGrossPay(2_dec);
  });
  field->addObserver(*rounder, "value", NSKeyValueObservingOptionNew);
  slip->setGrossPay(1.5_dec);
  EXPECT_EQ(slip->grossPay(), 2_dec);
  EXPECT_EQ(field->value(), Value(2_dec));
  field->removeObserver(*rounder, "value");
}

TEST(KeyValueBinding, AnObserverThatChangesTheReceiverAgainIsFollowed) {
  for (const bool observesFirst : {true, false}) {
    auto slip = make<BoundSlip>();
    auto field = make<BoundField>();
    auto rounder = make<CallingObserver>([&] {
      if (field->value() == Value(1.5_dec)) field->setValue(2_dec);
    });
    if (observesFirst) field->addObserver(*rounder, "value", NSKeyValueObservingOptionNew);
    bind(*field, *slip, "grossPay");
    if (!observesFirst) field->addObserver(*rounder, "value", NSKeyValueObservingOptionNew);
    slip->setGrossPay(1.5_dec);
    EXPECT_EQ(field->value(), Value(2_dec)) << observesFirst;
    EXPECT_EQ(slip->grossPay(), 2_dec) << observesFirst;
    field->setValue(1.5_dec);
    EXPECT_EQ(field->value(), Value(2_dec)) << observesFirst;
    EXPECT_EQ(slip->grossPay(), 2_dec) << observesFirst;
    field->removeObserver(*rounder, "value");
  }
}

TEST(KeyValueBinding, AnExceptionInASetterPassesAndTheBindingGoesOn) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  field->adjust = [](const Value& value) -> Value {
    if (value == Value(13)) throw std::runtime_error("unlucky");
    return value;
  };
  EXPECT_THROW(slip->setGrossPay(13_dec), std::runtime_error);
  slip->setGrossPay(14_dec);
  EXPECT_EQ(field->value(), Value(14_dec));
}

}  // namespace
}  // namespace norvik::test
