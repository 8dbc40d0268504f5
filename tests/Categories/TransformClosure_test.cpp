#include "NorvikCore/Categories/TransformClosure.h"

#include <gtest/gtest.h>

#include "NorvikCore/Categories/NKBlockValueTransformer.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "tests/platform/appkit/BindingModels.h"
#include "tests/support/ExpectRaises.h"

#include <functional>
#include <string>

namespace norvik::test {
namespace {

/// The closure's result for a value.
Value made(const detail::TransformClosure& closure, const Value& value) { return closure.block()(value); }

/// The reason of the NSInvalidArgumentException that the operation raises; "" if it raises nothing.
std::string refusal(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const NSException& problem) {
    EXPECT_EQ(problem.name(), NSInvalidArgumentException);
    return problem.reason().str();
  }
  return "";
}

Decimal half(const Decimal& amount) { return amount / 2; }

TEST(TransformClosure, HeaderExample) {
  EXPECT_EQ(made([](const Decimal& pennies) { return pennies / 100; }, 1250), Value(12.5_dec));
  const auto shown = [](const std::optional<Decimal>& pay) { return pay ? nk_currencyStyleString(*pay) : "none"_ns; };
  EXPECT_EQ(made(shown, 1234.5_dec), Value("1,234.50"));
  EXPECT_EQ(made(shown, {}), Value("none"));
  const auto employee = make<BoundEmployee>();
  employee->setName("Ann");
  EXPECT_EQ(made(&BoundEmployee::name, Value(employee)), Value("Ann"));
}

TEST(TransformClosure, TakesEveryTypeThatAValueBecomes) {
  EXPECT_EQ(made([](int hours) { return hours + 1; }, 37), Value(38));
  EXPECT_EQ(made([](bool isPaid) { return isPaid ? "paid" : "unpaid"; }, true), Value("paid"));
  EXPECT_EQ(made([](NSString text) { return text.length(); }, "Zo\u00EB"), Value(3));
  EXPECT_EQ(made([](const BoundEmployee& each) { return each.name(); }, Value(make<BoundEmployee>())), Value());
  EXPECT_EQ(made([](const Ref<BoundEmployee>& each) { return !each; }, {}), Value(true));
  EXPECT_EQ(made([](const Value& any) { return any.isAbsent(); }, {}), Value(true));
  EXPECT_EQ(made(half, 5), Value(2.5));
  EXPECT_EQ(made(Block<NSString(int)>([](int) { return "block"_ns; }), 5), Value("block"));
}

TEST(TransformClosure, ReturnsAnythingThatBecomesAValue) {
  EXPECT_EQ(made([](int) { return std::optional<Decimal>(); }, 1), Value());
  EXPECT_EQ(made([](int) { return NSRange{1, 2}; }, 1), Value("{1, 2}"));
  const auto employee = make<BoundEmployee>();
  EXPECT_EQ(made([&](int) { return employee; }, 1).object(), employee.get());
}

TEST(TransformClosure, AValueOfAnotherKindRaises) {
  const auto closure = [](const NSString& text) { return text; };
  EXPECT_EQ(refusal([&] { static_cast<void>(made(closure, 5)); }), "\"5\" (NSNumber) is not a text");
  EXPECT_EQ(refusal([&] { static_cast<void>(made(closure, {})); }), "an absent value is not a text");
  EXPECT_EQ(refusal([] { static_cast<void>(made([](BoundEmployee& each) { return each.name(); }, "Ann")); }),
            "\"Ann\" (NSString) is not an object of the class that the closure takes");
}

TEST(TransformClosure, AnAbsentClosureStaysAbsent) {
  EXPECT_FALSE(detail::TransformClosure(nullptr).block());
  EXPECT_FALSE(detail::TransformClosure(NKTransformBlock()).block());
  EXPECT_FALSE(detail::TransformClosure(Block<int(int)>()).block());
  EXPECT_FALSE(detail::TransformClosure(std::function<int(int)>()).block());
  int (BoundEmployee::*noMember)() const = nullptr;
  EXPECT_FALSE(detail::TransformClosure(noMember).block());
}

TEST(TransformClosure, ATransformBlockIsShared) {
  const NKTransformBlock block = [](const Value& value) { return value; };
  EXPECT_EQ(detail::TransformClosure(block).block(), block);
}

TEST(TransformClosure, BindsAPathThatTheCompilerChecks) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  slip->setGrossPay(1200);
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(
      *field, NSValueBinding, *slip, keyPath<&BoundSlip::grossPay>(),
      NSDictionary::dictionaryWith({{NKBind, "validate"}}), [](const Decimal& pay) { return pay / 12; },
      [](const Decimal& shown) { return shown * 12; });
  EXPECT_EQ(field->value(), Value(100));
  EXPECT_FALSE(nk_updateBoundValue(*field, -1));
  EXPECT_TRUE(nk_updateBoundValue(*field, 110));
  EXPECT_EQ(slip->grossPay(), 1320_dec);
  slip->setGrossPay(24);
  EXPECT_EQ(field->value(), Value(2));

  auto text = make<BoundField>();
  nk_bind_toObject_withKeyPath_block(*text, NSValueBinding, *slip, keyPath<&BoundSlip::netPay>(),
                                     [](const Decimal& net) { return nk_currencyStyleString(net); });
  slip->setTax(4.5_dec);
  EXPECT_EQ(text->value(), Value("19.50"));
}

TEST(TransformClosure, APathThatBreaksOffIsAbsent) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  nk_bind_toObject_withKeyPath_block(*field, NSValueBinding, *slip,
                                     keyPath<&BoundSlip::employee, &BoundEmployee::name>(),
                                     [](const std::optional<NSString>& name) { return name.value_or("nobody"); });
  EXPECT_EQ(field->value(), Value("nobody"));
  slip->setEmployee(make<BoundEmployee>());
  slip->employee()->setName("Ann");
  EXPECT_EQ(field->value(), Value("Ann"));
}

TEST(TransformClosure, AValueThatDoesNotConvertRaisesInTheSetter) {
  auto slip = make<BoundSlip>();
  auto field = make<BoundField>();
  slip->setNote("first");
  nk_bind_toObject_withKeyPath_block(*field, NSValueBinding, *slip, "note",
                                     [](const NSString& note) { return note + "!"; });
  EXPECT_EQ(field->value(), Value("first!"));
  EXPECT_RAISES(slip->setNote(5), "NSInvalidArgumentException");
  EXPECT_EQ(slip->note(), Value(5));
  slip->setNote("second");
  EXPECT_EQ(field->value(), Value("second!"));
}

}  // namespace
}  // namespace norvik::test
