// examples/payrun/PayRun.h - what everybody is paid in a tax month, and has been since the tax year began.
#pragma once

#include <vector>

#include "Employer.h"
#include "PayItem.h"
#include "TaxMonth.h"

namespace payrun {

/// Pay with bonuses, and what is deducted from it.
struct Amounts {
  norvik::Decimal pay, deductions;

  [[nodiscard]] norvik::Decimal net() const { return pay - deductions; }
  Amounts& operator+=(const Amounts& other);
};

struct Payslip {
  Amounts month, toDate;  // toDate: from the tax year's first day to the month's last

  Payslip& operator+=(const Payslip& other);
};

class PayRun {
 public:
  /// The employer must outlive the run.
  PayRun(const Employer& employer, int month);

  /// Items after the month's last day are of another pay run and do not count.
  void add(const PayItem& item);

  [[nodiscard]] const Employer& employer() const { return employer_; }
  [[nodiscard]] int month() const { return month_; }
  [[nodiscard]] const Days& days() const { return days_; }
  /// In the order of the employer's employees.
  [[nodiscard]] const std::vector<Payslip>& payslips() const { return payslips_; }
  /// In the order of the employer's departments.
  [[nodiscard]] std::vector<Payslip> departmentTotals() const;
  [[nodiscard]] Payslip total() const;

 private:
  const Employer& employer_;
  int month_;
  Days days_;
  std::vector<Payslip> payslips_;
};

}  // namespace payrun
