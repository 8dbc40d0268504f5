#include "Employer.h"

#include <utility>

namespace payrun {

bool Employer::add(Department department) {
  if (!departmentsByCode_.emplace(department.code, departments_.size()).second) return false;
  departments_.push_back(std::move(department));
  return true;
}

bool Employer::add(Employee employee) {
  if (!employeesByNumber_.emplace(employee.number, employees_.size()).second) return false;
  employees_.push_back(std::move(employee));
  return true;
}

std::optional<std::size_t> Employer::departmentWithCode(std::string_view code) const {
  const auto found = departmentsByCode_.find(code);
  return found == departmentsByCode_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::size_t> Employer::employeeWithNumber(std::string_view number) const {
  const auto found = employeesByNumber_.find(number);
  return found == employeesByNumber_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace payrun
