// benchmarks/payrun/sum_items.cpp - the peer of the pay run: sums the items of a generated employer by hand, on one
// thread, in pennies. It checks nothing, and it prints a line for each employee without any format.
//
//   sum_items FOLDER MONTH    # number, pay, deductions and net of the month, then the same to date
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  std::string text(static_cast<std::size_t>(file.tellg()), '\0');
  file.seekg(0);
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  return text;
}

/// Takes the next field of a line. Fields have no doubled quotation marks.
std::string_view takeField(std::string_view& text) {
  const bool isQuoted = text.front() == '"';
  if (isQuoted) text.remove_prefix(1);
  const std::size_t end = isQuoted ? text.find('"') : text.find_first_of(",\n");
  const std::string_view field = text.substr(0, end);
  text.remove_prefix(end + (isQuoted ? 2 : 1));
  return field;
}

/// The digits of an amount with two decimals.
std::int64_t penniesOf(std::string_view amount) {
  std::int64_t pennies = 0;
  for (const char c : amount) {
    if ('0' <= c && c <= '9') pennies = pennies * 10 + (c - '0');
  }
  return pennies;
}

/// The tax month of a day such as 2024-05-28: 1 begins on 6 April.
int taxMonthOf(std::string_view date) {
  const auto number = [&](std::size_t at) { return (date[at] - '0') * 10 + date[at + 1] - '0'; };
  const int month = (number(5) + 8) % 12 + (number(8) < 6 ? 0 : 1);
  return month == 0 ? 12 : month;
}

struct Sums {
  std::string_view number;
  std::int64_t pay = 0, deductions = 0, payToDate = 0, deductionsToDate = 0;
};

}  // namespace

int main(int, char** arguments) {
  const std::string folder = arguments[1];
  const int wanted = std::atoi(arguments[2]);
  const std::string employees = readFile(folder + "/employees.csv"), items = readFile(folder + "/items.csv");
  std::vector<Sums> sums;
  std::unordered_map<std::string_view, std::size_t> indexes;
  for (std::string_view text = std::string_view(employees).substr(employees.find('\n') + 1); !text.empty();) {
    const std::string_view number = text.substr(0, text.find(','));
    indexes.emplace(number, sums.size());
    sums.push_back({number});
    text.remove_prefix(text.find('\n') + 1);
  }
  for (std::string_view text = std::string_view(items).substr(items.find('\n') + 1); !text.empty();) {
    Sums& sum = sums[indexes.find(takeField(text))->second];
    const int month = taxMonthOf(takeField(text));
    const bool isDeduction = takeField(text) == "deduction";
    takeField(text);
    const std::int64_t pennies = penniesOf(takeField(text));
    if (month == wanted) (isDeduction ? sum.deductions : sum.pay) += pennies;
    if (month <= wanted) (isDeduction ? sum.deductionsToDate : sum.payToDate) += pennies;
  }
  const auto number = [](std::int64_t value) { return static_cast<long long>(value); };
  for (const Sums& sum : sums) {
    std::printf("%.*s %lld %lld %lld %lld %lld %lld\n", static_cast<int>(sum.number.size()), sum.number.data(),
                number(sum.pay), number(sum.deductions), number(sum.pay - sum.deductions), number(sum.payToDate),
                number(sum.deductionsToDate), number(sum.payToDate - sum.deductionsToDate));
  }
}
