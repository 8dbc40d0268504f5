#include "Report.h"

#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/Categories/NSNumber+Norvik.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "Notices.h"
#include "Table.h"

namespace payrun {

using namespace norvik;

namespace {

std::string text(const NSString& string) { return std::string(string.view()); }

Ref<NSNumberFormatter> britishWords() {
  const auto formatter = make<NSNumberFormatter>();
  formatter->setLocale(nk_defaultLocale());
  formatter->setNumberStyle(NSNumberFormatterSpellOutStyle);
  return formatter;
}

Ref<NKMonetaryTermDecimalNumberFormatter> britishMoney() {
  const auto formatter = make<NKMonetaryTermDecimalNumberFormatter>();
  formatter->setLocale(nk_defaultLocale());
  return formatter;
}

void addAmounts(Table& table, const Amounts& month, const Amounts& toDate) {
  for (const Amounts& amounts : {month, toDate}) {
    for (const Decimal& amount : {amounts.pay, amounts.deductions, amounts.net()}) table.add(amountText(amount));
  }
}

std::vector<Table::Column> withAmounts(std::vector<Table::Column> columns) {
  for (const char* heading : {"Pay", "Deductions", "Net", "Pay to date", "Deductions to date", "Net to date"}) {
    columns.push_back({heading, Side::Right});
  }
  return columns;
}

void appendPayslips(std::string& result, const PayRun& run) {
  Table table(withAmounts({{"Employee"}, {"Name"}, {"Department"}, {"Sort code"}, {"Account"}}));
  const Employer& employer = run.employer();
  for (std::size_t i = 0; i < employer.employees().size(); ++i) {
    const Employee& employee = employer.employees()[i];
    const Department& department = employer.departments()[employee.department];
    table.add({employee.number, employee.name, department.name, employee.sortCode, employee.account});
    addAmounts(table, run.payslips()[i].month, run.payslips()[i].toDate);
  }
  table.appendTo(result);
}

void appendTotals(std::string& result, const PayRun& run) {
  Table table(withAmounts({{"Department"}, {"People", Side::Right}}));
  const Employer& employer = run.employer();
  const auto addRow = [&](const std::string& name, const DepartmentTotal& total) {
    table.add({name, std::to_string(total.people)});
    addAmounts(table, total.month, total.toDate);
  };
  const std::vector<DepartmentTotal> totals = run.departmentTotals();
  for (std::size_t i = 0; i < totals.size(); ++i) addRow(employer.departments()[i].name, totals[i]);
  table.addRule();
  addRow("Employer", run.total());
  table.appendTo(result);
}

Decimal magnitudeOf(const Decimal& amount) { return amount.isNegative() ? negate(amount) : amount; }

std::string dayText(Date day) { return text(nk_utcDateStringWithFormat(day, "d MMMM yyyy")); }

}  // namespace

std::string poundsText(const Decimal& amount) {
  return (amount.isNegative() ? "-£" : "£") + amountText(magnitudeOf(amount));
}

// A formatter that the caller keeps saves the look-up that nk_currencyStyleString makes for each amount, and payslips
// have many amounts.
std::string amountText(const Decimal& amount) {
  thread_local const Ref<NKMonetaryTermDecimalNumberFormatter> kept = britishMoney();
  return text(kept->stringFromNumber(amount));
}

std::string amountInWords(const Decimal& amount) {
  const Decimal magnitude = magnitudeOf(amount);
  const NSNumber pounds = integralNumber(magnitude);
  const NSNumber pence = integralNumber((magnitude - nk_decimalNumber(pounds)) * 100);
  thread_local const Ref<NSNumberFormatter> kept = britishWords();
  const auto inWords = [](const NSNumber& number, const char* one, const char* many) {
    return text(kept->stringFromNumber(number)) + " " + (number == NSNumber(1) ? one : many);
  };
  return (amount.isNegative() ? "minus " : "") + inWords(pounds, "pound", "pounds") + " and " +
         inWords(pence, "penny", "pence");
}

std::string report(const PayRun& run) {
  const Employer& employer = run.employer();
  std::string result = employer.name + "\n";
  result += "PAYE reference " + employer.payeReference + "\n";
  result += "Tax month " + std::to_string(run.month()) + " of " + taxYearName(employer.taxYear) + ": " +
            dayText(run.days().first) + " to " + dayText(run.days().last) + "\n\n";
  appendPayslips(result, run);
  result += "\n";
  appendTotals(result, run);
  const Decimal net = run.total().month.net();
  result += "\nNet pay: " + poundsText(net) + "\n";
  result += "In words: " + amountInWords(net) + "\n";
  result += noticesText(run);
  return result;
}

}  // namespace payrun
