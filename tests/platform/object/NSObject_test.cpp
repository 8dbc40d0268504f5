#include "NorvikCore/platform/object/NSObject.h"

#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

using namespace norvik;

namespace {

class Counted : public NSObject {
  NK_OBJECT(Counted, NSObject)
  explicit Counted(int* alive) : alive_(alive) { ++*alive_; }
  ~Counted() override { --*alive_; }

 private:
  int* alive_;
};

class Refusing : public NSObject {
  NK_OBJECT(Refusing, NSObject)
 protected:
  bool init() override { return false; }
};

class SelfKeeping : public NSObject {
  NK_OBJECT(SelfKeeping, NSObject)
  static inline std::vector<Ref<SelfKeeping>> kept;

 protected:
  bool init() override {
    kept.push_back(ref(*this));
    return true;
  }
};

class RefInDestructor : public NSObject {
  NK_OBJECT(RefInDestructor, NSObject)
  explicit RefInDestructor(int* destroyed) : destroyed_(destroyed) {}
  ~RefInDestructor() override {
    Ref<RefInDestructor> again = ref(*this);
    ++*destroyed_;
  }

 private:
  int* destroyed_;
};

using CodeByName = std::map<NSString, int>;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(std::map<NSString, int>, codes, setCodes)
  NK_READONLY_PROPERTY(int, revision)
  NK_WEAK_PROPERTY(NSObject, owner, setOwner)
  NK_ATOMIC_PROPERTY(NSString, note, setNote)
  NK_COMPUTED_PROPERTY(Decimal, netPay)

  Decimal netPay() const { return grossPay() - 20; }
  void recalculate() { revision_ = *revision_ + 1; }
  NK_METHOD(recalculate)
  Decimal payPlus(Decimal bonus, int times) const { return grossPay() + bonus * times; }
  NK_METHOD_AS(payPlus, "payPlusBonus:times:")
  static int defaultLevel() { return 3; }
  NK_CLASS_METHOD(defaultLevel)
};

}  // namespace

TEST(NSObject, HeaderExample) {
  Ref<Payslip> slip = make<Payslip>();
  slip->setGrossPay(120);
  slip->performSelector("recalculate");
  EXPECT_EQ(slip->valueForKey("grossPay"), Value(120));
  EXPECT_EQ(slip->valueForKey("revision"), Value(1));
}

TEST(ObjectMacros, HeaderExample) {
  Ref<Payslip> slip = make<Payslip>();
  slip->setValue_forKey(Value(120), "grossPay");
  EXPECT_EQ(slip->valueForKey("netPay"), Value(100));
}

TEST(Ref, HeaderExample) {
  Ref<Payslip> slip = make<Payslip>();
  slip->setGrossPay(Decimal::parse("1234.50").value());
  Ref<NSObject> same = slip;
  slip = nullptr;
  EXPECT_EQ(same->valueForKey("grossPay"), Value(1234.5));
}

TEST(NSObject, GoesWithItsLastRef) {
  int alive = 0;
  Ref<Counted> first = make<Counted>(&alive);
  Ref<NSObject> second = first;
  first = nullptr;
  EXPECT_EQ(alive, 1);
  second = nullptr;
  EXPECT_EQ(alive, 0);
}

TEST(NSObject, MovingARefLeavesTheOldOneEmpty) {
  int alive = 0;
  Ref<Counted> first = make<Counted>(&alive);
  Ref<Counted> second = std::move(first);
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): this is what is tested
  EXPECT_EQ(alive, 1);
}

TEST(NSObject, AnInitThatRefusesGivesAnEmptyRef) { EXPECT_FALSE(make<Refusing>()); }

TEST(NSObject, InitMayAlreadyTakeARefToTheObject) {
  Ref<SelfKeeping> made = make<SelfKeeping>();
  ASSERT_EQ(SelfKeeping::kept.size(), 1u);
  EXPECT_EQ(SelfKeeping::kept[0], made);
  SelfKeeping::kept.clear();
}

TEST(NSObject, ARefTakenInTheDestructorDoesNotDestroyTwice) {
  int destroyed = 0;
  (void)make<RefInDestructor>(&destroyed);
  EXPECT_EQ(destroyed, 1);
}

TEST(NSObject, IsEqualToItselfOnlyAndDescribesItselfByItsClass) {
  int alive = 0;
  const auto a = make<Counted>(&alive), b = make<Counted>(&alive);
  EXPECT_TRUE(a->isEqual(*a));
  EXPECT_FALSE(a->isEqual(*b));
  EXPECT_TRUE(a->description().hasPrefix("<Counted: 0x"));
}

TEST(NSObject, PropertiesKeepWhatTheirSettersAreGiven) {
  const auto slip = make<Payslip>();
  slip->setGrossPay(120);
  slip->setNote("paid");
  slip->setCodes({{"BR", 1}});
  EXPECT_EQ(slip->grossPay(), 120);
  EXPECT_EQ(slip->netPay(), 100);
  EXPECT_EQ(slip->note(), "paid");
  EXPECT_EQ(slip->codes().at("BR"), 1);
}

TEST(NSObject, AWeakPropertyReadsEmptyOnceItsObjectIsGone) {
  int alive = 0;
  const auto slip = make<Payslip>();
  Ref<Counted> owner = make<Counted>(&alive);
  slip->setOwner(owner);
  EXPECT_EQ(slip->owner(), owner);
  owner = nullptr;
  EXPECT_EQ(alive, 0);
  EXPECT_FALSE(slip->owner());
}

TEST(NSObject, OperationsArePerformedByName) {
  const auto slip = make<Payslip>();
  slip->setGrossPay(100);
  slip->performSelector("recalculate");
  EXPECT_EQ(slip->revision(), 1);
  EXPECT_EQ(slip->performSelector("payPlusBonus:times:", Value(5), Value(2)), Value(110));
  EXPECT_TRUE(slip->respondsToSelector("recalculate"));
  EXPECT_FALSE(slip->respondsToSelector("payPlus::"));
  EXPECT_EQ(Payslip::staticClass().performClassOperation("defaultLevel"), Value(3));
}

TEST(NSObject, PerformsAccessorsBySelector) {
  const auto slip = make<Payslip>();
  EXPECT_TRUE(slip->respondsToSelector("setGrossPay:"));
  slip->performSelector("setGrossPay:", Value(12.50_dec));
  EXPECT_EQ(slip->grossPay(), 12.50_dec);
  EXPECT_TRUE(slip->respondsToSelector("grossPay"));
  EXPECT_EQ(slip->performSelector("grossPay"), Value(12.50_dec));
  EXPECT_FALSE(slip->respondsToSelector("setGrossPay"));
  EXPECT_RAISES(slip->performSelector("setGrossPay:"), "NSInvalidArgumentException");
  EXPECT_RAISES(slip->performSelector("grossPay", Value(1)), "NSInvalidArgumentException");
  EXPECT_RAISES(slip->performSelector("setGrossPay:", Value("much")), "NSInvalidArgumentException");
}

TEST(NSObject, AnUnknownSelectorOrAWrongArgumentRaises) {
  const auto slip = make<Payslip>();
  EXPECT_RAISES(slip->performSelector("vanish"), "NSInvalidArgumentException");
  EXPECT_RAISES(slip->performSelector("payPlusBonus:times:", Value(5)), "NSInvalidArgumentException");
  EXPECT_RAISES(slip->performSelector("payPlusBonus:times:", Value("five"), Value(1)), "NSInvalidArgumentException");
  EXPECT_RAISES(Payslip::staticClass().performClassOperation("vanish"), "NSInvalidArgumentException");
}

TEST(NSObject, KeysReadAndWriteProperties) {
  const auto slip = make<Payslip>();
  slip->setValue_forKey(Value("1"), "note");
  slip->setValue_forKey(Value(7), "grossPay");
  EXPECT_EQ(slip->valueForKey("grossPay"), Value(7));
  EXPECT_EQ(slip->valueForKey("netPay"), Value(-13));
  EXPECT_EQ(slip->valueForKey("note"), Value("1"));
}

TEST(NSObject, AKeyThatDoesNotExistIsReadOnlyOrHasNoValueFormRaises) {
  const auto slip = make<Payslip>();
  EXPECT_RAISES((void)slip->valueForKey("grosPay"), "NSUnknownKeyException");
  EXPECT_RAISES(slip->setValue_forKey(Value(1), "grosPay"), "NSUnknownKeyException");
  EXPECT_RAISES(slip->setValue_forKey(Value(1), "revision"), "NSUnknownKeyException");
  EXPECT_RAISES((void)slip->valueForKey("codes"), "NSUnknownKeyException");
}
