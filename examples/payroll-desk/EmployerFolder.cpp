#include "EmployerFolder.h"

#include <utility>

#include "InputReader.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "OutputFile.h"
#include "PayslipFiles.h"
#include "TextFile.h"

namespace desk {

using namespace norvik;
using namespace payrun;

namespace {

constexpr const char* bonusReason = "Bonus";  // of a bonus without one

/// A field of a CSV file, in quotation marks if it needs them.
std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quotedText = "\"";
  for (const char c : text) {
    quotedText += c;
    if (c == '"') quotedText += c;
  }
  return quotedText + '"';
}

std::string csvRecord(std::initializer_list<std::string> fields) {
  std::string record;
  for (const std::string& field : fields) record += (record.empty() ? "" : ",") + csvField(field);
  return record + '\n';
}

}  // namespace

EmployerFolder::EmployerFolder(std::filesystem::path folder, int month)
    : path_(std::move(folder)), employer_(readEmployer(path_)), template_(installedTemplate()) {
  run_ = std::make_unique<PayRun>(employer_, month);
  items_.resize(employer_.employees().size());
  readItems(path_, employer_, [this](const PayItem& item) {
    run_->add(item);
    if (item.day <= run_->days().last) {
      items_[item.employee].push_back({item.day, item.kind, item.amount, std::string(item.description)});
    }
  });
}

Employer EmployerFolder::employerOf(const Edited& edited) const {
  Employer one;
  one.name = employer_.name;
  one.payeReference = employer_.payeReference;
  one.taxYear = employer_.taxYear;
  for (const Department& department : employer_.departments()) one.add(department);
  Employee employee = employer_.employees()[edited.index];
  employee.name = edited.name;
  employee.sortCode = edited.sortCode;
  employee.account = edited.account;
  one.add(std::move(employee));
  return one;
}

Document EmployerFolder::payslip(const Edited& edited) const {
  const Employer one = employerOf(edited);
  PayRun run(one, run_->month());
  for (const Item& item : items_[edited.index]) {
    run.add({0, item.day, item.kind, item.amount, item.description, std::nullopt});
  }
  if (edited.bonus > 0) {
    const std::string& reason = edited.bonusReason.empty() ? bonusReason : edited.bonusReason;
    run.add({0, run.days().last, ItemKind::Bonus, edited.bonus, reason, std::nullopt});
  }
  return template_.payslip(run, 0);
}

std::string EmployerFolder::payslipFileName(const Edited& edited) const {
  const Employer one = employerOf(edited);
  return payslipFileNames(PayRun(one, run_->month()), "pdf").front();
}

void EmployerFolder::save(const std::vector<Edited>& edits) const {
  std::vector<Employee> employees = employer_.employees();
  std::string items(TextFile(path_ / "items.csv").text());
  if (!items.ends_with('\n')) items += '\n';
  const std::string day(nk_utcDateStringWithFormat(run_->days().last, "yyyy-MM-dd").view());
  for (const Edited& edited : edits) {
    Employee& employee = employees[edited.index];
    employee.name = edited.name;
    employee.sortCode = edited.sortCode;
    employee.account = edited.account;
    if (edited.bonus > 0) {
      items += csvRecord({employee.number, day, "bonus", edited.bonusReason.empty() ? bonusReason : edited.bonusReason,
                          to_string(edited.bonus + 0.00_dec)});
    }
  }
  std::string people = "employee,name,department,sort_code,account,address\n";
  for (const Employee& each : employees) {
    people += csvRecord({each.number, each.name, employer_.departments()[each.department].code, each.sortCode,
                         each.account, each.address});
  }
  writeWhole(path_ / "employees.csv", people);
  writeWhole(path_ / "items.csv", items);
}

}  // namespace desk
