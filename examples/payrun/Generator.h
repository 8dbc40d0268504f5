// examples/payrun/Generator.h - an invented employer of any size, for trying things out and for measuring.
#pragma once

#include <cstddef>
#include <filesystem>

namespace payrun {

/// Writes employer.ini, employees.csv and items.csv of an employer of `people` people for the tax year 2024-25 to the
/// folder, which is made where there is none. The same number gives the same files. Throws InputError where one of the
/// files is there already, std::system_error where one cannot be written, and then leaves none of them.
void generateEmployer(std::size_t people, const std::filesystem::path& folder);

}  // namespace payrun
