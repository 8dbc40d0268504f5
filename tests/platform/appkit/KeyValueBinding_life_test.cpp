// Either side of a binding is destroyed or unbound at every point at which a callback can do so.
#include <gtest/gtest.h>

#include "tests/platform/appkit/BindingModels.h"

#include <functional>

namespace norvik::test {
namespace {

class CallingTransformer : public NSValueTransformer {
 public:
  explicit CallingTransformer(std::function<void()> call) : call_(std::move(call)) {}
  Value transformedValue(const Value& value) override {
    if (isOn) call_();
    return value;
  }
  bool isOn = false;

 private:
  std::function<void()> call_;
};

TEST(KeyValueBindingLife, TheReceiverGoesAndTheModelIsNotObservedAnyMore) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  const Weak<BoundField> gone = field;
  field = nullptr;
  EXPECT_FALSE(gone.lock());
  EXPECT_FALSE(slip->isObserved());
  slip->setGrossPay(1_dec);
}

TEST(KeyValueBindingLife, TheModelGoesAndTheReceiverKeepsItsValue) {
  auto slip = make<BoundSlip>();
  slip->setGrossPay(3_dec);
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  const Weak<BoundSlip> gone = slip;
  slip = nullptr;
  EXPECT_FALSE(gone.lock());
  EXPECT_EQ(field->value(), Value(3_dec));
  EXPECT_FALSE(infoForBinding(*field, NSValueBinding));
  field->setValue(4_dec);
  EXPECT_EQ(field->value(), Value(4_dec));
  unbind(*field, NSValueBinding);
}

TEST(KeyValueBindingLife, AReceiverWhoseModelIsGoneCanBeBoundAgain) {
  auto field = make<BoundField>();
  bind(*field, *make<BoundSlip>(), "grossPay");
  auto slip = make<BoundSlip>();
  slip->setGrossPay(8_dec);
  bind(*field, *slip, "grossPay");
  EXPECT_EQ(field->value(), Value(8_dec));
}

TEST(KeyValueBindingLife, AnObjectAlongThePathGoes) {
  auto slip = make<BoundSlip>();
  slip->setEmployee(make<BoundEmployee>());
  slip->employee()->setName("Sian");
  auto field = make<BoundField>();
  bind(*field, *slip, "employee.name");
  slip->setEmployee(nullptr);
  EXPECT_TRUE(field->value().isAbsent());
}

TEST(KeyValueBindingLife, AnObjectBoundToItselfGoes) {
  auto slip = make<BoundSlip>();
  bind_toObject_withKeyPath_options(*slip, "note", *slip, "grossPay", nullptr);
  slip->setGrossPay(2_dec);
  EXPECT_EQ(slip->note(), Value(2_dec));
  const Weak<BoundSlip> gone = slip;
  slip = nullptr;
  EXPECT_FALSE(gone.lock());
}

TEST(KeyValueBindingLife, OptionsAndTransformerGoWithTheBinding) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  Weak<NSValueTransformer> kept;
  {
    auto transformer = make<PenniesTransformer>();
    kept = transformer;
    bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, transformer}}));
  }
  EXPECT_TRUE(kept.lock());
  unbind(*field, NSValueBinding);
  EXPECT_FALSE(kept.lock());
}

TEST(KeyValueBindingLife, TheReceiverIsUnboundByItsOwnObserver) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  auto unbinder = make<CallingObserver>([&] { unbind(*field, NSValueBinding); });
  field->addObserver(*unbinder, "value", NSKeyValueObservingOptionNew);
  slip->setGrossPay(1_dec);
  slip->setGrossPay(2_dec);
  EXPECT_EQ(field->value(), Value(1_dec));
  field->removeObserver(*unbinder, "value");
}

TEST(KeyValueBindingLife, ATransformerThatUnbindsSetsNothing) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  auto transformer = make<CallingTransformer>([&] { unbind(*field, NSValueBinding); });
  bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, transformer}}));
  transformer->isOn = true;
  slip->setGrossPay(1_dec);
  EXPECT_EQ(field->value(), Value(0_dec));
  EXPECT_FALSE(slip->isObserved());
}

TEST(KeyValueBindingLife, ATransformerThatBindsAnewLeavesTheNewBinding) {
  auto slip = make<BoundSlip>(), other = make<BoundSlip>();
  other->setGrossPay(50_dec);
  auto field = make<BoundField>();
  auto transformer = make<CallingTransformer>([&] { bind(*field, *other, "grossPay"); });
  bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, transformer}}));
  transformer->isOn = true;
  slip->setGrossPay(1_dec);
  EXPECT_EQ(field->value(), Value(50_dec));
  EXPECT_EQ(infoForBinding(*field, NSValueBinding)->objectForKey(NSObservedObjectKey).object(), other.get());
}

TEST(KeyValueBindingLife, TheReceiverGoesWhileAChangeIsCarriedToIt) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  const Weak<BoundField> gone = field;
  auto transformer = make<CallingTransformer>([&] { field = nullptr; });
  bind(*field, *slip, "grossPay", NSDictionary::dictionaryWith({{NSValueTransformerBindingOption, transformer}}));
  transformer->isOn = true;
  slip->setGrossPay(1_dec);
  EXPECT_FALSE(gone.lock());
  EXPECT_FALSE(slip->isObserved());
}

TEST(KeyValueBindingLife, TheModelGoesWhileItTellsOfAChange) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  const Weak<BoundSlip> gone = slip;
  field->adjust = [&](const Value& value) {
    slip = nullptr;
    return value;
  };
  bind(*field, *slip, "note");
  slip = make<BoundSlip>();
  EXPECT_FALSE(gone.lock());
  const Weak<BoundSlip> next = slip;
  field->adjust = nullptr;
  bind(*field, *slip, "note");
  field->adjust = [&](const Value& value) {
    slip = nullptr;
    return value;
  };
  slip->setNote("last words");
  EXPECT_FALSE(next.lock());
  EXPECT_EQ(field->value(), Value("last words"));
}

TEST(KeyValueBindingLife, BothSidesGoInACallback) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  bind(*field, *slip, "grossPay");
  const Weak<BoundSlip> slipGone = slip;
  const Weak<BoundField> fieldGone = field;
  auto ender = make<CallingObserver>([&] {
    slip = nullptr;
    field = nullptr;
  });
  field->addObserver(*ender, "value", NSKeyValueObservingOptionNew);
  slip->setGrossPay(1_dec);
  EXPECT_FALSE(slipGone.lock());
  EXPECT_FALSE(fieldGone.lock());
}

TEST(KeyValueBindingLife, AThousandBindingsLeaveNothingOnTheirModel) {
  auto slip = make<BoundSlip>();
  for (int i = 0; i < 1000; ++i) {
    auto field = make<BoundField>();
    bind(*field, *slip, "grossPay");
    if (i % 2 == 0) unbind(*field, NSValueBinding);
  }
  EXPECT_FALSE(slip->isObserved());
}

}  // namespace
}  // namespace norvik::test
