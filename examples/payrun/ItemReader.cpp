#include "ItemReader.h"

#include <algorithm>

#include "Characters.h"
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Coercion.h"

namespace payrun {

using namespace norvik;

namespace {

std::optional<ItemKind> kindIn(std::string_view text) {
  if (text == "pay") return ItemKind::Pay;
  if (text == "bonus") return ItemKind::Bonus;
  if (text == "deduction") return ItemKind::Deduction;
  return std::nullopt;
}

}  // namespace

/// Parses "2024-05-28" or "2024-05-28 14:30:00". Absent if there is no such day.
std::optional<ItemReader::ItemDate> ItemReader::dateIn(std::string_view text) {
  constexpr std::string_view day = "0000-00-00", dayAndTime = "0000-00-00 00:00:00";
  const std::string_view form = text.size() == day.size() ? day : dayAndTime;
  if (text.size() != form.size()) return std::nullopt;
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (form[i] == '0' ? !isDigits(text.substr(i, 1)) : text[i] != form[i]) return std::nullopt;
  }
  const auto date = Date::dateWithString(text);
  if (!date) return std::nullopt;
  return ItemDate{std::string(text), *date, nk_nearestStartOfDay(*date)};
}

/// Tries the last employee and the next one before it searches.
std::optional<std::size_t> ItemReader::employeeWithNumber(std::string_view number) {
  const std::vector<Employee>& employees = employer_.employees();
  for (std::size_t i = employee_; i < std::min(employee_ + 2, employees.size()); ++i) {
    if (employees[i].number == number) return i;
  }
  return employer_.employeeWithNumber(number);
}

PayItem ItemReader::read(CsvReader& record, std::vector<Date>& timed) {
  const auto refuse = [&](std::size_t column, const std::string& problem) {
    record.file().refuse(record[column].offset, quoted(record[column].text) + problem);
  };
  const auto employee = employeeWithNumber(record[0].text);
  if (!employee) refuse(0, " is not an employee of employees.csv");
  employee_ = *employee;
  if (!date_ || date_->text != record[1].text) date_ = dateIn(record[1].text);
  if (!date_) refuse(1, " is not a date such as 2024-05-28 or 2024-05-28 14:30:00");
  const Date date = date_->date, day = date_->day;
  if (day != date) timed.push_back(date);
  if (!year_.contains(day)) refuse(1, " is not in the tax year " + taxYearName(employer_.taxYear));
  const auto kind = kindIn(record[2].text);
  if (!kind) refuse(2, " is not pay, bonus or deduction");
  AmountReader::Problem problem{};
  const auto amount = amounts_.read(record[4].text, problem);
  if (!amount && problem == AmountReader::Problem::TooLarge) {
    refuse(4, " is too large: an amount is 999,999,999.99 at most");
  }
  if (!amount) refuse(4, " is not an amount");
  PayItem item{*employee, day, *kind, *amount, record[3].text, std::nullopt};
  if (day > date) item.moved = {record.line(), nk_addDays(day, -1), record[1].text};
  return item;
}

}  // namespace payrun
