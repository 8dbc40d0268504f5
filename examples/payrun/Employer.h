// examples/payrun/Employer.h - an employer, its departments and its employees.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TextIndex.h"

namespace payrun {

struct Department {
  std::string code, name;
};

struct Employee {
  std::string number, name;
  std::size_t department = 0;  // index in the employer's departments
  std::string sortCode;        // three pairs of digits: 12-34-56
  std::string account;         // eight digits
  std::string address;         // parts separated by commas; empty if unknown
};

class Employer {
 public:
  std::string name, payeReference;
  int taxYear = 0;  // the year in which the tax year begins: 2024 is 2024-25

  /// Returns false if the code or the number exists already.
  bool add(Department department);
  bool add(Employee employee);

  [[nodiscard]] const std::vector<Department>& departments() const { return departments_; }
  [[nodiscard]] const std::vector<Employee>& employees() const { return employees_; }
  [[nodiscard]] std::optional<std::size_t> departmentWithCode(std::string_view code) const;
  [[nodiscard]] std::optional<std::size_t> employeeWithNumber(std::string_view number) const;

 private:
  std::vector<Department> departments_;
  std::vector<Employee> employees_;
  TextIndex departmentsByCode_, employeesByNumber_;
};

}  // namespace payrun
