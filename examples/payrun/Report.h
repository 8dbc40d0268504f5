// examples/payrun/Report.h - a pay run as text: the payslips, the totals, and the net pay in words.
#pragma once

#include <string>

#include "NorvikCore/platform/values/Decimal.h"
#include "PayRun.h"

namespace payrun {

/// Ends with the points that a clerk must check, if there are any.
std::string report(const PayRun& run);

/// At least two decimals, thousands in groups: "1,234.50".
std::string amountText(const norvik::Decimal& amount);
/// The same in pounds: "-£1,234.50".
std::string poundsText(const norvik::Decimal& amount);
/// "one thousand two hundred and thirty-four pounds and fifty pence". `amount` has at most two decimals.
std::string amountInWords(const norvik::Decimal& amount);

}  // namespace payrun
