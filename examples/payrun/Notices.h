// examples/payrun/Notices.h - points that a clerk must check, although everything was paid.
#pragma once

#include <string>

#include "PayRun.h"

namespace payrun {

/// A table of the items that were moved to another day because of their time of day, and a table of the net pays below
/// zero. An empty line comes before each table. Empty if there are no such items and net pays.
std::string noticesText(const PayRun& run);
/// "1 item moved by its time of day, 2 net pays below zero"; empty if there are none.
std::string noticesLine(const PayRun& run);

/// Writes their number to standard error and to the log. If no report is shown, it also lists them on standard error.
void tellNotices(const PayRun& run, bool isReportShown);

}  // namespace payrun
