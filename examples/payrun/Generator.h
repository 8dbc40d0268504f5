// examples/payrun/Generator.h - an invented employer of any size, for tests and for measurements.
#pragma once

#include <cstddef>
#include <filesystem>

namespace payrun {

/// Writes employer.ini, employees.csv and items.csv of an employer of `people` people for the tax year 2024-25 to the
/// folder, which is created if it does not exist. The same number gives the same files. Throws InputError if one of the
/// files exists already, and std::system_error if one cannot be written; then it leaves none of them.
void generateEmployer(std::size_t people, const std::filesystem::path& folder);

}  // namespace payrun
