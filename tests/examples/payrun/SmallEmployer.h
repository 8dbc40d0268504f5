// tests/examples/payrun/SmallEmployer.h - an employer of a few people, and items for them.
#pragma once

#include <string>

#include "Employer.h"
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "PayRun.h"

namespace payrun_test {

/// "Test & Sons Ltd", tax year 2024-25, with the departments Operations and Sales. person() creates people in
/// Operations.
inline payrun::Employer smallEmployer() {
  payrun::Employer employer;
  employer.name = "Test & Sons Ltd";
  employer.payeReference = "123/T1";
  employer.taxYear = 2024;
  employer.add(payrun::Department{"OPS", "Operations"});
  employer.add(payrun::Department{"SAL", "Sales"});
  return employer;
}

inline payrun::Employee person(const std::string& number, const std::string& name, const std::string& address = "") {
  return {number, name, 0, "12-34-56", "12345678", address};
}

inline payrun::PayItem item(std::size_t employee, int month, int day, payrun::ItemKind kind, norvik::Decimal amount,
                            std::string_view description) {
  return {employee, norvik::nk_dateWithYear(2024, month, day), kind, amount, description, std::nullopt};
}

}  // namespace payrun_test
