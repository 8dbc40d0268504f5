// examples/payroll-desk/EmployerFolder.h - an employer's folder in memory, and what is written back to it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Document.h"
#include "PayRun.h"
#include "PayslipTemplate.h"

namespace desk {

/// What was edited of a person, as a value that another thread may read.
struct Edited {
  std::size_t index = 0;  // in the employer's employees
  std::string name, sortCode, account, bonusReason;
  norvik::Decimal bonus;
};

/// Never changes after it was read: any thread.
class EmployerFolder {
 public:
  /// Reads the files and the template of payslips. Throws payrun::InputError.
  EmployerFolder(std::filesystem::path folder, int month);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] const payrun::Employer& employer() const { return employer_; }
  [[nodiscard]] const payrun::PayRun& run() const { return *run_; }

  /// The payslip of the month with the edits.
  [[nodiscard]] payrun::Document payslip(const Edited& edited) const;
  /// "E001 Zoë Smith 2024-25 month 1.pdf", without characters that have a meaning in a path.
  [[nodiscard]] std::string payslipFileName(const Edited& edited) const;
  /// Writes the people to employees.csv, and each bonus to items.csv as an item of the month's last day. Each file is
  /// replaced as a whole. Throws std::system_error.
  void save(const std::vector<Edited>& edits) const;

 private:
  struct Item {
    norvik::Date day;
    payrun::ItemKind kind;
    norvik::Decimal amount;
    std::string description;
  };
  /// An employer with this person alone, with the edits.
  [[nodiscard]] payrun::Employer employerOf(const Edited& edited) const;

  std::filesystem::path path_;
  payrun::Employer employer_;
  std::unique_ptr<payrun::PayRun> run_;
  std::vector<std::vector<Item>> items_;  // by employee
  payrun::PayslipTemplate template_;
};

}  // namespace desk
