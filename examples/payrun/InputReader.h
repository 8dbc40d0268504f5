// examples/payrun/InputReader.h - an employer's files, read strictly: the first thing that is wrong ends the run.
//
// Every function throws InputError, which names file, line, column and the offending text.
#pragma once

#include <filesystem>
#include <functional>

#include "Employer.h"
#include "PayItem.h"

namespace payrun {

/// What the employer's folder holds.
constexpr const char* inputFiles[] = {"employer.ini", "employees.csv", "items.csv"};

/// Reads employer.ini and employees.csv of a folder.
Employer readEmployer(const std::filesystem::path& folder);

/// Reads items.csv of a folder and gives each item to `use`, in the file's order, then returns how many there were. A
/// date with a time of day is brought to its nearest start of day, with a warning in the log; where that is the next
/// day's, the item says so.
std::size_t readItems(const std::filesystem::path& folder, const Employer& employer,
                      const std::function<void(const PayItem&)>& use);

}  // namespace payrun
