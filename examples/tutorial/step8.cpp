// examples/tutorial/step8.cpp - docs/tutorial.md: queries.
#include "Payslip.h"

#include "NorvikCore/linq/LINQ.h"

#include <iostream>

using namespace payroll;

int main() {
  const Ref<NSArray> payslips = NSArray::arrayWithObjects(
      payslip("Sian", "Works", 2500.00_dec), payslip("Ann", "Sales", 1850.50_dec), payslip("Bob", "Works", -12.50_dec));

  const auto isPaid = [](const Payslip& slip) { return slip.netPay() > 0; };
  const Ref<NSArray> names =
      payslips | linq_where(isPaid) | linq_orderByKey("name", true) | linq_select(&Payslip::name);
  std::cout << "paid: " << names->componentsJoinedByString(", ") << "\n";

  const Value total = payslips | linq_where(isPaid) | linq_select(&Payslip::netPay) | linq_sum();
  std::cout << "total: " << total << "\n";

  const Ref<NSMutableDictionary> departments = payslips | linq_groupBy(&Payslip::department);
  for (const auto& [department, group] : *departments)
    std::cout << department << ": " << linq_sumForKey(*group.as<Ref<NSArray>>(), "grossPay") << "\n";
}
