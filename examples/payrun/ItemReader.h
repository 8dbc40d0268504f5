// examples/payrun/ItemReader.h - reads the records of items.csv: an employee's number, a date, a kind, a description
// and an amount.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AmountReader.h"
#include "CsvReader.h"
#include "Employer.h"
#include "PayItem.h"
#include "TaxMonth.h"

namespace payrun {

/// Keeps the employee and the date of the last item, because most files are sorted by employee and have the items of a
/// day together. Confined to the thread that uses it.
class ItemReader {
 public:
  static constexpr std::array<std::string_view, 5> headings = {"employee", "date", "kind", "description", "amount"};

  /// The employer must outlive the reader.
  explicit ItemReader(const Employer& employer) : employer_(employer), year_(taxYear(employer.taxYear)) {}

  /// The item in a record of five fields. A date with a time of day is appended to `timed`; the item has the nearest
  /// start of a day. Throws InputError.
  PayItem read(CsvReader& record, std::vector<norvik::Date>& timed);

 private:
  struct ItemDate {
    std::string text;
    norvik::Date date, day;
  };
  static std::optional<ItemDate> dateIn(std::string_view text);
  std::optional<std::size_t> employeeWithNumber(std::string_view number);

  const Employer& employer_;
  Days year_;
  AmountReader amounts_;
  std::size_t employee_ = 0;      // of the last item
  std::optional<ItemDate> date_;  // of the last item
};

}  // namespace payrun
