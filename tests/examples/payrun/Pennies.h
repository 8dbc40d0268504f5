// tests/examples/payrun/Pennies.h - an independent calculation from an employer's files, with whole pennies and its own
// parser.
//
// It shares nothing with the pay run or the library, and reads only well-formed files.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace payrun_test {

using Pennies = std::int64_t;

/// Sums of pay with bonuses and of deductions, by tax month 1 to 12 (index 0 is unused).
struct MonthlySums {
  std::array<Pennies, 13> pay{}, deductions{};
};

/// " 1,234.5 " is 123450; a third decimal of 5 or more rounds away from zero.
Pennies penniesOf(std::string_view amount);
/// The sums of items.csv of a folder.
MonthlySums sumItems(const std::filesystem::path& folder);

}  // namespace payrun_test
