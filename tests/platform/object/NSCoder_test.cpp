#include "NorvikCore/platform/object/NSCoder.h"

#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

class NSCoderTestPayslip : public NSObject, public NSCoding {
  NK_OBJECT(NSCoderTestPayslip, NSObject)
  NK_CODING
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  void encodeWithCoder(NSCoder& coder) const override { coder.encodeObject(grossPay(), "grossPay"); }
  bool initWithCoder(NSCoder& coder) override {
    grossPay_ = coder.decode<Decimal>("grossPay");
    return true;
  }
};

TEST(NSCoder, HeaderExample) {
  const auto slip = make<NSCoderTestPayslip>();
  slip->setGrossPay(*Decimal::parse("1234.50"));
  Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(slip);
  auto same = NSKeyedUnarchiver::unarchiveObjectWithData(*data).as<Ref<NSCoderTestPayslip>>();
  EXPECT_NE(same, slip);
  EXPECT_EQ(same->grossPay().stringValue(), "1234.50");
}

}  // namespace
}  // namespace norvik
