// examples/payrun/PayRun.h - the pay of all employees in a tax month, and since the start of the tax year.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "Employer.h"
#include "NorvikCore/platform/values/NSString.h"
#include "PayItem.h"
#include "TaxMonth.h"

namespace payrun {

/// Pay with bonuses, and the deductions from it.
struct Amounts {
  norvik::Decimal pay, deductions;

  [[nodiscard]] norvik::Decimal net() const { return pay - deductions; }
};

struct Payslip {
  std::size_t department = 0;  // index in the employer's departments
  Amounts month, toDate;       // toDate: from the tax year's first day to the month's last
};

/// An item of the month, as the payslip shows it.
struct PayslipItem {
  norvik::Date day;
  ItemKind kind = ItemKind::Pay;
  norvik::Decimal amount;
  norvik::NSString description;
};

/// The number of people in a department, and the sums of their payslips.
struct DepartmentTotal {
  std::size_t people = 0;
  Amounts month, toDate;
};

/// An item that was moved into, out of or within the month because of its time of day.
struct MovedItem {
  std::size_t employee = 0;
  std::size_t line = 0;  // of items.csv
  std::string from;      // the date as typed
  norvik::Date to;
};

/// Several threads may read a run while no thread adds to it.
class PayRun {
 public:
  /// The employer must outlive the run.
  PayRun(const Employer& employer, int month);

  /// Items after the month's last day belong to another pay run and are ignored.
  void add(const PayItem& item);

  [[nodiscard]] const Employer& employer() const { return employer_; }
  [[nodiscard]] int month() const { return month_; }
  [[nodiscard]] const Days& days() const { return days_; }
  /// In the order of the employer's employees.
  [[nodiscard]] const std::vector<Payslip>& payslips() const { return payslips_; }
  /// The month's items of an employee by day. Items of the same day are in the order in which they were added.
  [[nodiscard]] std::vector<PayslipItem> itemsOf(std::size_t employee) const;
  /// In the order of the employer's departments.
  [[nodiscard]] std::vector<DepartmentTotal> departmentTotals() const;
  [[nodiscard]] DepartmentTotal total() const;

  // Points that a clerk must check.
  /// In the order in which they were added.
  [[nodiscard]] const std::vector<MovedItem>& movedItems() const { return movedItems_; }
  /// The employees whose net pay of the month is below zero.
  [[nodiscard]] std::vector<std::size_t> employeesBelowZero() const;

 private:
  static constexpr std::uint32_t none = 0xFFFFFFFF;
  /// The items of an employee are a linked list in one vector, because most employees have few items and there may be a
  /// million employees.
  struct KeptItem {
    PayslipItem item;
    std::uint32_t next = none;
  };
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  struct List {
    std::uint32_t first = none, last = none;
  };
  void keep(const PayItem& item);

  const Employer& employer_;
  int month_;
  Days days_;
  std::vector<Payslip> payslips_;
  std::vector<KeptItem> items_;
  std::vector<List> lists_;
  std::unordered_map<std::string, norvik::NSString, Hash, std::equal_to<>> descriptions_;  // shared, because few differ
  std::vector<MovedItem> movedItems_;
};

}  // namespace payrun
