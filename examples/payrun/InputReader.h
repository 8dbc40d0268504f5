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

/// Reads items.csv of a folder on all processors, passes each item to `use`, and returns the number of items. `use` is
/// called for one item at a time, in the file's order, but on any thread. A date with a time of day is moved to the
/// nearest start of a day; the warnings are logged at the end. If that is the start of the next day, the item has
/// `moved`.
std::size_t readItems(const std::filesystem::path& folder, const Employer& employer,
                      const std::function<void(const PayItem&)>& use);

}  // namespace payrun
