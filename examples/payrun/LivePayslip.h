// examples/payrun/LivePayslip.h - one employee's payslip as a model object whose properties can be observed.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/ObjectMacros.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSString.h"

namespace payrun {

class PayRun;

class LivePayslip : public norvik::NSObject {
  NK_OBJECT(LivePayslip, norvik::NSObject)
  NK_PROPERTY(norvik::NSString, number, setNumber)
  NK_PROPERTY(norvik::NSString, name, setName)
  NK_PROPERTY(norvik::NSString, department, setDepartment)
  NK_PROPERTY(norvik::NSString, sortCode, setSortCode)
  NK_PROPERTY(norvik::NSString, account, setAccount)
  NK_PROPERTY(norvik::Decimal, pay, setPay)
  NK_PROPERTY(norvik::Decimal, deductions, setDeductions)
  NK_PROPERTY(norvik::Decimal, payToDate, setPayToDate)
  NK_PROPERTY(norvik::Decimal, deductionsToDate, setDeductionsToDate)

 public:
  /// Copies the values of the employee at that index from the run. It sets only the properties that differ.
  void update(const PayRun& run, std::size_t index);
};

}  // namespace payrun
