// examples/payroll-desk/PayslipSheet.h - a payslip as rich text for a QTextBrowser.
#pragma once

#include <QString>

#include "Document.h"

namespace desk {

/// The part of HTML that Qt's rich text understands. Any thread.
QString sheetOf(const payrun::Document& document);

}  // namespace desk
