#include "Employer.h"

#include <utility>

namespace payrun {

bool Employer::add(Department department) {
  if (departmentWithCode(department.code)) return false;
  departmentsByCode_.add(department.code, departments_.size());
  departments_.push_back(std::move(department));
  return true;
}

bool Employer::add(Employee employee) {
  if (employeeWithNumber(employee.number)) return false;
  employeesByNumber_.add(employee.number, employees_.size());
  employees_.push_back(std::move(employee));
  return true;
}

std::optional<std::size_t> Employer::departmentWithCode(std::string_view code) const {
  return departmentsByCode_.find(code, [this](std::size_t i) -> std::string_view { return departments_[i].code; });
}

std::optional<std::size_t> Employer::employeeWithNumber(std::string_view number) const {
  return employeesByNumber_.find(number, [this](std::size_t i) -> std::string_view { return employees_[i].number; });
}

}  // namespace payrun
