// examples/payrun/PayslipValues.h - what the placeholders of a payslip's template stand for.
//
// Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "PayRun.h"

namespace payrun {

/// The payslip that is made, and the item for which a line is repeated.
struct PayslipSource {
  const PayRun& run;
  std::size_t index = 0;  // of the employee
  const PayslipItem* item = nullptr;

  [[nodiscard]] const Employer& employer() const { return run.employer(); }
  [[nodiscard]] const Employee& employee() const { return employer().employees()[index]; }
  [[nodiscard]] const Payslip& payslip() const { return run.payslips()[index]; }
};

/// A text or an amount, the other is null.
struct Placeholder {
  std::string_view name;
  std::string (*text)(const PayslipSource&) = nullptr;
  norvik::Decimal (*amount)(const PayslipSource&) = nullptr;
  bool isOfItem = false;

  /// In UTF-8, lines separated by line feeds, no other control character. Empty where there is no such thing.
  [[nodiscard]] std::string valueFor(const PayslipSource& source, bool inPounds) const;
};

/// Null for a name that is none.
const Placeholder* placeholderNamed(std::string_view name);
/// All of them, separated by commas.
std::string placeholderNames();

}  // namespace payrun
