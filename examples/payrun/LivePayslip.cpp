#include "LivePayslip.h"

#include "PayRun.h"

namespace payrun {

using namespace norvik;

void LivePayslip::update(const PayRun& run, std::size_t index) {
  const Employee& employee = run.employer().employees()[index];
  const Payslip& payslip = run.payslips()[index];
  const auto set = [this](const auto& present, const auto& value, auto setter) {
    if (present != value) (this->*setter)(value);
  };
  set(number(), NSString(employee.number), &LivePayslip::setNumber);
  set(name(), NSString(employee.name), &LivePayslip::setName);
  set(department(), NSString(run.employer().departments()[employee.department].name), &LivePayslip::setDepartment);
  set(sortCode(), NSString(employee.sortCode), &LivePayslip::setSortCode);
  set(account(), NSString(employee.account), &LivePayslip::setAccount);
  set(pay(), payslip.month.pay, &LivePayslip::setPay);
  set(deductions(), payslip.month.deductions, &LivePayslip::setDeductions);
  set(payToDate(), payslip.toDate.pay, &LivePayslip::setPayToDate);
  set(deductionsToDate(), payslip.toDate.deductions, &LivePayslip::setDeductionsToDate);
}

}  // namespace payrun
