// examples/payrun/PayslipFiles.h - a file for each employee's payslip.
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
/// what a path or a shell takes for something else. Names that would be the same, if only on a disk that ignores case,
/// get a number: "E001 Zoë Smith 2024-25 month 1 (2).html". 200 bytes at most.
std::vector<std::string> payslipFileNames(const PayRun& run, std::string_view extension);

/// Writes what `render` makes of each payslip to the folder, which is made where there is none, on all processors, and
/// shows the progress. The files get their names once all of them are on disk. Throws std::system_error, and then none
/// of them is there, unless giving them their names failed.
void writePayslips(const PayRun& run, const PayslipTemplate& form, const std::filesystem::path& folder,
                   std::string_view extension, std::string (*render)(const Document&));

}  // namespace payrun
