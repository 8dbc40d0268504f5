#include "tests/examples/payrun/Pennies.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "tests/examples/payrun/PayrunProgram.h"

namespace payrun_test {

namespace {

int numberAt(const std::string& text, std::size_t at, std::size_t digits) { return std::stoi(text.substr(at, digits)); }

int daysIn(int year, int month) {
  constexpr std::array<int, 13> days = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && year % 4 == 0 ? 29 : days[static_cast<std::size_t>(month)];  // valid from 1901 to 2099
}

/// The tax month of a date with or without a time of day. A date with a time from 13:00:00 counts as the next day.
std::size_t taxMonthOf(const std::string& date) {
  const int year = numberAt(date, 0, 4);
  int month = numberAt(date, 5, 2), day = numberAt(date, 8, 2);
  if (date.size() > 10 && numberAt(date, 11, 2) > 12) ++day;
  if (day > daysIn(year, month)) {
    day = 1;
    month = month % 12 + 1;
  }
  const int sinceApril = (month + 8) % 12;  // April is 0
  const int index = day >= 6 ? sinceApril + 1 : sinceApril;
  return static_cast<std::size_t>(index == 0 ? 12 : index);
}

/// Calls `use` with the fields of each record of a CSV text.
template <class Use>
void forEachRecord(const std::string& text, Use use) {
  std::vector<std::string> record(1);
  bool inQuotes = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (inQuotes && text[i] == '"' && i + 1 < text.size() && text[i + 1] == '"') {
      record.back() += text[++i];
    } else if (text[i] == '"') {
      inQuotes = !inQuotes;
    } else if (!inQuotes && text[i] == ',') {
      record.emplace_back();
    } else if (!inQuotes && text[i] == '\n') {
      use(record);
      record.assign(1, "");
    } else {
      record.back() += text[i];
    }
  }
}

}  // namespace

Pennies penniesOf(std::string_view amount) {
  Pennies thousandths = 0;
  int decimals = -1;
  bool negative = false;
  for (const char c : amount) {
    if (c == ' ' || c == ',') continue;
    if (c == '-') {
      negative = true;
    } else if (c == '.') {
      decimals = 0;
    } else if ('0' <= c && c <= '9' && decimals < 3) {
      thousandths = thousandths * 10 + (c - '0');
      if (decimals >= 0) ++decimals;
    } else {
      throw std::runtime_error("unexpected amount: " + std::string(amount));
    }
  }
  for (int i = std::max(decimals, 0); i < 3; ++i) thousandths *= 10;
  const Pennies pennies = (thousandths + 5) / 10;
  return negative ? -pennies : pennies;
}

MonthlySums sumItems(const std::filesystem::path& folder) {
  MonthlySums sums;
  bool isHeading = true;
  forEachRecord(readFile(folder / "items.csv"), [&](const std::vector<std::string>& record) {
    if (!std::exchange(isHeading, false)) {
      auto& months = record.at(2) == "deduction" ? sums.deductions : sums.pay;
      months[taxMonthOf(record.at(1))] += penniesOf(record.at(4));
    }
  });
  return sums;
}

}  // namespace payrun_test
