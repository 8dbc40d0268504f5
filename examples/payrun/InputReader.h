// examples/payrun/InputReader.h - reads an employer's files strictly: the first error ends the run.
//
// Every function throws InputError, which names file, line, column and the offending text.
#pragma once

#include <filesystem>
#include <functional>

#include "Employer.h"
#include "PayItem.h"

namespace payrun {

/// The files in the employer's folder.
constexpr const char* inputFiles[] = {"employer.ini", "employees.csv", "items.csv"};

/// Reads employer.ini and employees.csv of a folder.
Employer readEmployer(const std::filesystem::path& folder);

/// Reads items.csv of a folder, passes each item to `use` in the file's order, and returns the number of items. A date
/// with a time of day is moved to the nearest start of a day, with a warning in the log. If that is the start of the
/// next day, the item has `moved`.
std::size_t readItems(const std::filesystem::path& folder, const Employer& employer,
                      const std::function<void(const PayItem&)>& use);

}  // namespace payrun
