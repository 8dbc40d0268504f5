#include "NorvikCore/platform/appkit/NSTableCellView.h"

#include <gtest/gtest.h>

#include "tests/platform/appkit/BindingModels.h"

namespace norvik::test {
namespace {

TEST(NSTableCellView, HeaderExample) {
  auto payslip = make<BoundSlip>(), another = make<BoundSlip>();
  payslip->setGrossPay(1_dec);
  another->setGrossPay(2_dec);
  auto cell = make<NSTableCellView>();
  auto label = make<BoundField>();
  cell->setObjectValue(payslip);
  bind(*label, *cell, "objectValue.grossPay");
  EXPECT_EQ(label->value(), Value(1_dec));
  cell->setObjectValue(another);
  EXPECT_EQ(label->value(), Value(2_dec));
}

TEST(NSTableCellView, ItsValueIsAbsentAtFirst) { EXPECT_TRUE(make<NSTableCellView>()->objectValue().isAbsent()); }

}  // namespace
}  // namespace norvik::test
