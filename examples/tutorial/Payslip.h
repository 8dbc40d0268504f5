// examples/tutorial/Payslip.h - docs/tutorial.md: the model.
#pragma once

#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/values/Decimal.h"

namespace payroll {

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(NSString, department, setDepartment)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(Decimal, pensionRate, setPensionRate)  // in percent
  NK_COMPUTED_PROPERTY(Decimal, pension)
  NK_COMPUTED_PROPERTY(Decimal, netPay)
  NK_AFFECTED_BY(pension, grossPay)
  NK_AFFECTED_BY(pension, pensionRate)
  NK_AFFECTED_BY(netPay, grossPay)
  NK_AFFECTED_BY(netPay, pension)

  Decimal pension() const { return (grossPay() * pensionRate() / 100).round(2); }
  Decimal netPay() const { return grossPay() - pension(); }
};

inline Ref<Payslip> payslip(const NSString& name, const NSString& department, Decimal grossPay) {
  auto slip = make<Payslip>();
  slip->setName(name);
  slip->setDepartment(department);
  slip->setGrossPay(grossPay);
  slip->setPensionRate(5);
  return slip;
}

}  // namespace payroll
