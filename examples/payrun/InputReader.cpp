#include "InputReader.h"

#include <algorithm>
#include <array>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "Characters.h"
#include "CsvBlocks.h"
#include "CsvReader.h"
#include "IniFile.h"
#include "ItemReader.h"
#include "NorvikCore/Categories/NSDate+Norvik_Coercion.h"
#include "NorvikCore/platform/dispatch/Apply.h"
#include "NorvikCore/platform/foundation/NSProcessInfo.h"
#include "ProgressBar.h"
#include "TaxMonth.h"

namespace payrun {

using namespace norvik;

namespace {

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

/// The items of a block, which wait for those of the blocks before it.
class ItemBlock {
 public:
  ItemBlock(CsvBlock block, ItemReader& reader) : block_(std::move(block)), records_(block_.text) {
    try {
      constexpr std::size_t shortItem = 48;  // bytes
      items_.reserve(block_.text.text().size() / shortItem);
      if (block_.number == 0) readHeadings(records_, ItemReader::headings);
      while (readRecord(records_, ItemReader::headings.size())) items_.push_back(reader.read(records_, timed_));
    } catch (...) {
      error_ = std::current_exception();
    }
  }
  ItemBlock(const ItemBlock&) = delete;
  ItemBlock& operator=(const ItemBlock&) = delete;

  [[nodiscard]] std::size_t number() const { return block_.number; }
  [[nodiscard]] std::size_t end() const { return block_.end; }
  [[nodiscard]] const std::vector<PayItem>& items() const { return items_; }
  /// The dates with a time of day.
  [[nodiscard]] const std::vector<Date>& timed() const { return timed_; }
  /// The error that follows the items; empty if there is none.
  [[nodiscard]] const std::exception_ptr& error() const { return error_; }

 private:
  CsvBlock block_;
  CsvReader records_;  // the items' texts are views into its fields
  std::vector<PayItem> items_;
  std::vector<Date> timed_;
  std::exception_ptr error_;
};

/// Uses the items of blocks in the file's order. Threads add the blocks in any order.
class ItemsInOrder {
 public:
  ItemsInOrder(std::size_t bytes, const std::function<void(const PayItem&)>& use)
      : progress_("reading items", bytes), use_(use) {}

  void add(std::unique_ptr<const ItemBlock> block) {
    const std::lock_guard lock(mutex_);
    waiting_.emplace(block->number(), std::move(block));
    for (auto next = waiting_.find(next_); next != waiting_.end(); next = waiting_.find(++next_)) {
      if (!error_) useAll(*next->second);
      waiting_.erase(next);
    }
  }

  /// Called when all blocks were added: logs a warning for each date with a time of day up to the first error, and
  /// throws that. Returns the number of items.
  [[nodiscard]] std::size_t finish() const {
    for (const Date date : timed_) static_cast<void>(nk_nearestStartOfDayWithLoggedWarning(date, true));
    if (error_) std::rethrow_exception(error_);
    return count_;
  }

 private:
  void useAll(const ItemBlock& block) {
    try {
      timed_.insert(timed_.end(), block.timed().begin(), block.timed().end());
      for (const PayItem& item : block.items()) use_(item);
      count_ += block.items().size();
      error_ = block.error();
    } catch (...) {
      error_ = std::current_exception();
    }
    progress_.show(block.end());
  }

  std::mutex mutex_;  // guards the members below
  ProgressBar progress_;
  const std::function<void(const PayItem&)>& use_;
  std::map<std::size_t, std::unique_ptr<const ItemBlock>> waiting_;  // by number
  std::size_t next_ = 0;                                             // number of the next block to use
  std::size_t count_ = 0;
  std::vector<Date> timed_;
  std::exception_ptr error_;  // the first in the file
};

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
  CsvBlocks blocks(folder / "items.csv");
  ItemsInOrder items(blocks.size(), use);
  // Each processor takes the next block as soon as it has read one. The whole file is read even after an error, because
  // a file that is not UTF-8 is refused for that.
  dispatch_apply(NSProcessInfo::processInfo().processorCount(), dispatch_get_global_queue(), [&](std::size_t) {
    ItemReader reader(employer);
    while (auto block = blocks.next()) items.add(std::make_unique<ItemBlock>(*std::move(block), reader));
  });
  return items.finish();
}

}  // namespace payrun
