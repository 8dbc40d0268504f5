#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSNumber.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

class FormattedPayslip : public NSObject {
  NK_OBJECT(FormattedPayslip, NSObject)
  [[nodiscard]] NSString description() const override { return "a payslip"; }
};

TEST(FormatObjects, ValuesShowAsText) {
  EXPECT_EQ(stringWithFormat("%@", Decimal::decimalNumberWithString("1234.25")), "1234.25");
  EXPECT_EQ(stringWithFormat("%@", Date::fromReferenceSeconds(0)), "2001-01-01 00:00:00 +0000");
  EXPECT_EQ(stringWithFormat("%@ %@", NSNumber(7), NSNumber(2.5)), "7 2.5");
  EXPECT_EQ(stringWithFormat("%@ %@ %@ %@", Value(7), Value("text"), Value(), Value::null()), "7 text (null) <null>");
}

TEST(FormatObjects, ObjectsShowTheirDescription) {
  const auto payslip = make<FormattedPayslip>();
  const Ref<NSObject> object = payslip;
  EXPECT_EQ(stringWithFormat("%@ %@ %@ %@", payslip, object, *payslip, payslip.get()),
            "a payslip a payslip a payslip a payslip");
  EXPECT_EQ(stringWithFormat("%@", Value(object)), "a payslip");
}

TEST(FormatObjects, AnAbsentObjectShowsAsNull) {
  EXPECT_EQ(stringWithFormat("%@ %@", Ref<FormattedPayslip>(), Block<void()>()), "(null) (null)");
  EXPECT_EQ(stringWithFormat("%p", Ref<FormattedPayslip>()), "0x0");
}

TEST(FormatObjects, ReferencesHaveAnAddress) {
  const auto payslip = make<FormattedPayslip>();
  EXPECT_EQ(stringWithFormat("%p", payslip), stringWithFormat("%p", static_cast<const void*>(payslip.get())));
}

TEST(FormatObjects, ClosuresClassesAndSelectorsCanBeShown) {
  const Block<void()> block = [] {};
  EXPECT_TRUE(stringWithFormat("%@", block).containsString("Block"));
  EXPECT_EQ(stringWithFormat("%@ %@", FormattedPayslip::staticClass(), SEL("run:")), "FormattedPayslip run:");
}

}  // namespace
}  // namespace norvik
