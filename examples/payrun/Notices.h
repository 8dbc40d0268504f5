// examples/payrun/Notices.h - what a clerk has to look at, though everything was paid.
#pragma once

#include <string>

#include "PayRun.h"

namespace payrun {

/// A table of the items that their time of day moved, and one of the net pays below zero, each behind an empty line;
/// empty for neither.
std::string noticesText(const PayRun& run);
/// "1 item moved by its time of day, 2 net pays below zero"; empty for neither.
std::string noticesLine(const PayRun& run);

/// Says on standard error and in the log how many there are, and names them on standard error where no report does.
void tellNotices(const PayRun& run, bool isReportShown);

}  // namespace payrun
