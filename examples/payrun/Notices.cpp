#include "Notices.h"

#include <cstdio>

#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "Report.h"
#include "Table.h"

namespace payrun {

using namespace norvik;

namespace {

std::string counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

void appendMovedItems(std::string& result, const PayRun& run) {
  if (run.movedItems().empty()) return;
  Table table({{"Employee"}, {"Name"}, {"Line", Side::Right}, {"From"}, {"To"}});
  for (const MovedItem& item : run.movedItems()) {
    const Employee& employee = run.employer().employees()[item.employee];
    table.add({employee.number, employee.name, std::to_string(item.line), item.from,
               nk_utcDateStringWithFormat(item.to, "yyyy-MM-dd").str()});
  }
  result += "\nItems of items.csv that their time of day moved to the next day\n";
  table.appendTo(result);
}

void appendNetPaysBelowZero(std::string& result, const PayRun& run) {
  const std::vector<std::size_t> employees = run.employeesBelowZero();
  if (employees.empty()) return;
  Table table({{"Employee"}, {"Name"}, {"Net", Side::Right}});
  for (const std::size_t i : employees) {
    const Employee& employee = run.employer().employees()[i];
    table.add({employee.number, employee.name, amountText(run.payslips()[i].month.net())});
  }
  result += "\nNet pay below zero\n";
  table.appendTo(result);
}

}  // namespace

std::string noticesText(const PayRun& run) {
  std::string result;
  appendMovedItems(result, run);
  appendNetPaysBelowZero(result, run);
  return result;
}

std::string noticesLine(const PayRun& run) {
  const std::size_t moved = run.movedItems().size(), belowZero = run.employeesBelowZero().size();
  std::string line;
  if (moved > 0) line = counted(moved, "item moved by its time of day", "items moved by their time of day");
  if (belowZero > 0) {
    line += (line.empty() ? "" : ", ") + counted(belowZero, "net pay below zero", "net pays below zero");
  }
  return line;
}

void tellNotices(const PayRun& run, bool isReportShown) {
  const std::string line = noticesLine(run);
  if (line.empty()) return;
  DDLogWarn("needs attention: %s", line.c_str());
  const std::string names = isReportShown ? "; the report names them\n" : "\n" + noticesText(run);
  std::fprintf(stderr, "payrun: needs attention: %s%s", line.c_str(), names.c_str());
}

}  // namespace payrun
