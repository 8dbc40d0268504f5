// examples/payrun/PayslipValues.h - the values of the placeholders in a payslip's template.
//
// Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "PayRun.h"

namespace payrun {

/// The current payslip, and the item for which a line is repeated.
struct PayslipSource {
  const PayRun& run;
  std::size_t index = 0;  // of the employee
  const PayslipItem* item = nullptr;

  [[nodiscard]] const Employer& employer() const { return run.employer(); }
  [[nodiscard]] const Employee& employee() const { return employer().employees()[index]; }
  [[nodiscard]] const Payslip& payslip() const { return run.payslips()[index]; }
};

/// A text or an amount; the other pointer is null.
struct Placeholder {
  std::string_view name;
  std::string (*text)(const PayslipSource&) = nullptr;
  norvik::Decimal (*amount)(const PayslipSource&) = nullptr;
  bool isOfItem = false;

  /// The value in UTF-8. Lines are separated by line feeds; there is no other control character. Empty if there is no
  /// value.
  [[nodiscard]] std::string valueFor(const PayslipSource& source, bool inPounds) const;
};

/// Null for an unknown name.
const Placeholder* placeholderNamed(std::string_view name);
/// All names, separated by commas.
std::string placeholderNames();

}  // namespace payrun
