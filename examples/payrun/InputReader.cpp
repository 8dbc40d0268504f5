#include "InputReader.h"

#include <algorithm>
#include <array>
#include <span>

#include "AmountReader.h"
#include "Characters.h"
#include "CsvReader.h"
#include "IniFile.h"
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Coercion.h"
#include "ProgressBar.h"
#include "TaxMonth.h"

namespace payrun {

using namespace norvik;

namespace {

bool isDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return '0' <= c && c <= '9'; });
}

bool isBlank(std::string_view text) { return text.find_first_not_of(' ') == std::string_view::npos; }

/// Refuses a text with characters that could break its line of the report.
void checkPrintable(const TextFile& file, std::string_view text, std::size_t offset) {
  if (hasControlCharacter(text)) file.refuse(offset, quoted(text) + " has a control character");
}

std::string listed(std::span<const std::string_view> words) {
  std::string result;
  for (const std::string_view word : words) result += (result.empty() ? "" : ",") + std::string(word);
  return result;
}

/// Reads the first record, which must be the headings, with or without the optional ones. Returns their number.
std::size_t readHeadings(CsvReader& records, std::span<const std::string_view> headings, std::size_t optional = 0) {
  const auto required = headings.first(headings.size() - optional);
  const std::string wanted =
      listed(required) + (optional == 0 ? "" : ", with or without " + listed(headings.last(optional)));
  if (!records.next()) records.file().refuse(0, "\"\" is not the headings " + wanted);
  for (std::size_t i = 0; i < std::max(records.size(), required.size()); ++i) {
    if (i < records.size() && i < headings.size() && records[i].text == headings[i]) continue;
    const CsvField wrong = i < records.size() ? records[i] : records.record();
    records.file().refuse(wrong.offset, quoted(records.record().text) + " is not the headings " + wanted);
  }
  return records.size();
}

/// Reads the next record, which must have one field for each heading.
bool readRecord(CsvReader& records, std::size_t columns) {
  if (!records.next()) return false;
  if (records.size() != columns) {
    const CsvField record = records.record();
    const std::size_t where = records.size() > columns ? records[columns].offset : record.offset + record.text.size();
    records.file().refuse(where, quoted(record.text) + " has " + std::to_string(records.size()) +
                                     (records.size() == 1 ? " field" : " fields") + " instead of " +
                                     std::to_string(columns));
  }
  return true;
}

int taxYearIn(const TextFile& file, const IniEntry& entry) {
  const std::string_view text = entry.value;
  constexpr int earliest = 1900, latest = 2199;
  if (text.size() == 7 && text[4] == '-' && isDigits(text.substr(0, 4)) && isDigits(text.substr(5))) {
    const int year = std::stoi(std::string(text.substr(0, 4)));
    if (earliest <= year && year <= latest && taxYearName(year) == text) return year;
  }
  file.refuse(entry.valueOffset, quoted(text) + " is not a tax year such as 2024-25");
}

void readIniOf(Employer& employer, const TextFile& file) {
  constexpr std::array<std::string_view, 3> required = {"name", "paye_reference", "tax_year"};
  std::array<bool, 3> found{};
  for (const IniEntry& entry : readIni(file)) {
    if (entry.value.empty()) file.refuse(entry.valueOffset, quoted(entry.key) + " has no value");
    checkPrintable(file, entry.value, entry.valueOffset);
    if (entry.section == "departments") {
      employer.add(Department{std::string(entry.key), std::string(entry.value)});
      continue;
    }
    const auto key = std::find(required.begin(), required.end(), entry.key);
    if (entry.section != "employer" || key == required.end()) {
      file.refuse(entry.keyOffset, quoted(entry.key) + " in section " + quoted(entry.section) + " is not known");
    }
    found[static_cast<std::size_t>(key - required.begin())] = true;
    if (*key == "name") employer.name = entry.value;
    if (*key == "paye_reference") employer.payeReference = entry.value;
    if (*key == "tax_year") employer.taxYear = taxYearIn(file, entry);
  }
  for (std::size_t i = 0; i < required.size(); ++i) {
    if (!found[i]) file.refuse(file.text().size(), quoted(required[i]) + " is missing in section \"employer\"");
  }
  if (employer.departments().empty()) file.refuse(file.text().size(), "section \"departments\" has no department");
}

/// Six digits, with or without spaces or hyphens between the pairs, are returned as three pairs. Empty for any other
/// text.
std::string sortCodeIn(std::string_view text) {
  std::string digits(text);
  if (text.size() == 8 && text[2] == text[5] && (text[2] == '-' || text[2] == ' ')) {
    digits.erase(5, 1);
    digits.erase(2, 1);
  }
  if (digits.size() != 6 || !isDigits(digits)) return {};
  return digits.substr(0, 2) + "-" + digits.substr(2, 2) + "-" + digits.substr(4, 2);
}

Employee employeeIn(const CsvReader& record, const Employer& employer) {
  const TextFile& file = record.file();
  const auto refuse = [&](std::size_t column, const std::string& problem) {
    file.refuse(record[column].offset, quoted(record[column].text) + problem);
  };
  Employee employee;
  for (const std::size_t column : {0U, 1U, 5U}) {
    if (column < record.size()) checkPrintable(file, record[column].text, record[column].offset);
  }
  employee.number = record[0].text;
  if (isBlank(employee.number)) refuse(0, " is not an employee's number");
  employee.name = record[1].text;
  if (isBlank(employee.name)) refuse(1, " is not a name");
  const auto department = employer.departmentWithCode(record[2].text);
  if (!department) refuse(2, " is not a department of employer.ini");
  employee.department = *department;
  employee.sortCode = sortCodeIn(record[3].text);
  if (employee.sortCode.empty()) refuse(3, " is not a sort code");
  employee.account = record[4].text;
  if (employee.account.size() != 8 || !isDigits(employee.account))
    refuse(4, " is not an account number of eight digits");
  if (record.size() > 5 && !isBlank(record[5].text)) employee.address = record[5].text;
  return employee;
}

/// Parses "2024-05-28" or "2024-05-28 14:30:00". Absent if there is no such day.
std::optional<Date> dateIn(std::string_view text) {
  constexpr std::string_view day = "0000-00-00", dayAndTime = "0000-00-00 00:00:00";
  const std::string_view form = text.size() == day.size() ? day : dayAndTime;
  if (text.size() != form.size()) return std::nullopt;
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (form[i] == '0' ? !isDigits(text.substr(i, 1)) : text[i] != form[i]) return std::nullopt;
  }
  return Date::dateWithString(text);
}

/// Counts lines from the offset of the last call, so that many ascending offsets cost one pass over the text.
class LineCounter {
 public:
  explicit LineCounter(std::string_view text) : text_(text) {}

  std::size_t lineOf(std::size_t offset) {
    const std::string_view passed = text_.substr(offset_, offset - offset_);
    line_ += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
    offset_ = offset;
    return line_;
  }

 private:
  std::string_view text_;
  std::size_t offset_ = 0, line_ = 1;
};

std::optional<ItemKind> kindIn(std::string_view text) {
  if (text == "pay") return ItemKind::Pay;
  if (text == "bonus") return ItemKind::Bonus;
  if (text == "deduction") return ItemKind::Deduction;
  return std::nullopt;
}

}  // namespace

Employer readEmployer(const std::filesystem::path& folder) {
  Employer employer;
  readIniOf(employer, TextFile(folder / "employer.ini"));

  constexpr std::array<std::string_view, 6> headings = {"employee",  "name",    "department",
                                                        "sort_code", "account", "address"};
  const TextFile file(folder / "employees.csv");
  ProgressBar progress("reading employees", file.text().size());
  CsvReader records(file);
  const std::size_t columns = readHeadings(records, headings, 1);
  while (readRecord(records, columns)) {
    if (!employer.add(employeeIn(records, employer))) {
      file.refuse(records[0].offset, quoted(records[0].text) + " is given twice");
    }
    progress.show(records.position());
  }
  return employer;
}

std::size_t readItems(const std::filesystem::path& folder, const Employer& employer,
                      const std::function<void(const PayItem&)>& use) {
  constexpr std::array<std::string_view, 5> headings = {"employee", "date", "kind", "description", "amount"};
  const TextFile file(folder / "items.csv");
  const Days year = taxYear(employer.taxYear);
  const AmountReader amounts;
  ProgressBar progress("reading items", file.text().size());
  CsvReader records(file);
  readHeadings(records, headings);
  std::size_t count = 0;
  LineCounter lines(file.text());
  while (readRecord(records, headings.size())) {
    const auto refuse = [&](std::size_t column, const std::string& problem) {
      file.refuse(records[column].offset, quoted(records[column].text) + problem);
    };
    const auto employee = employer.employeeWithNumber(records[0].text);
    if (!employee) refuse(0, " is not an employee of employees.csv");
    const auto date = dateIn(records[1].text);
    if (!date) refuse(1, " is not a date such as 2024-05-28 or 2024-05-28 14:30:00");
    const Date day = nk_nearestStartOfDayWithLoggedWarning(*date, true);
    if (!year.contains(day)) refuse(1, " is not in the tax year " + taxYearName(employer.taxYear));
    const auto kind = kindIn(records[2].text);
    if (!kind) refuse(2, " is not pay, bonus or deduction");
    AmountReader::Problem problem{};
    const auto amount = amounts.read(records[4].text, problem);
    if (!amount && problem == AmountReader::Problem::TooLarge) {
      refuse(4, " is too large: an amount is 999,999,999.99 at most");
    }
    if (!amount) refuse(4, " is not an amount");
    PayItem item{*employee, day, *kind, *amount, records[3].text, std::nullopt};
    if (day > *date) item.moved = {lines.lineOf(records.record().offset), nk_addDays(day, -1), records[1].text};
    use(item);
    ++count;
    progress.show(records.position());
  }
  return count;
}

}  // namespace payrun
