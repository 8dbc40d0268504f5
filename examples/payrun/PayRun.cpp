#include "PayRun.h"

namespace payrun {

using namespace norvik;

Amounts& Amounts::operator+=(const Amounts& other) {
  pay += other.pay;
  deductions += other.deductions;
  return *this;
}

Payslip& Payslip::operator+=(const Payslip& other) {
  month += other.month;
  toDate += other.toDate;
  return *this;
}

PayRun::PayRun(const Employer& employer, int month)
    : employer_(employer),
      month_(month),
      days_(taxMonth(employer.taxYear, month)),
      payslips_(employer.employees().size()) {}

void PayRun::add(const PayItem& item) {
  if (item.day > days_.last) return;
  Payslip& payslip = payslips_[item.employee];
  const auto count = [&](Amounts& amounts) {
    (item.kind == ItemKind::Deduction ? amounts.deductions : amounts.pay) += item.amount;
  };
  count(payslip.toDate);
  if (days_.contains(item.day)) count(payslip.month);
}

std::vector<Payslip> PayRun::departmentTotals() const {
  std::vector<Payslip> totals(employer_.departments().size());
  for (std::size_t i = 0; i < payslips_.size(); ++i) totals[employer_.employees()[i].department] += payslips_[i];
  return totals;
}

Payslip PayRun::total() const {
  Payslip total;
  for (const Payslip& payslip : payslips_) total += payslip;
  return total;
}

}  // namespace payrun
