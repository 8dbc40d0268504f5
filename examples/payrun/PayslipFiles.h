// examples/payrun/PayslipFiles.h - writes a file for each employee's payslip.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Document.h"
#include "PayRun.h"
#include "PayslipTemplate.h"

namespace payrun {

/// "E001 Zoë Smith 2024-25 month 1.html", in the order of the employees: the number, the name and the month, without
/// characters that have a special meaning in a path or a shell. Names that are equal, even if only when case is
/// ignored, get a number: "E001 Zoë Smith 2024-25 month 1 (2).html". At most 200 bytes.
std::vector<std::string> payslipFileNames(const PayRun& run, std::string_view extension);

/// Renders each payslip and writes it to the folder, which is created if it does not exist. It uses all processors and
/// shows the progress. The files get their names when all of them are on disk. Throws std::system_error; then none of
/// the files exists, unless the error occurred while they got their names.
void writePayslips(const PayRun& run, const PayslipTemplate& form, const std::filesystem::path& folder,
                   std::string_view extension, std::string (*render)(const Document&));

}  // namespace payrun
