// examples/payrun/PayItem.h - one line of pay: what the payroll decided that somebody gets or is deducted on a day.
#pragma once

#include <cstddef>

#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/Decimal.h"

namespace payrun {

enum class ItemKind { Pay, Bonus, Deduction };

struct PayItem {
  std::size_t employee = 0;  // index in the employer's employees
  norvik::Date day;          // a payroll date: 00:00:00 UTC
  ItemKind kind = ItemKind::Pay;
  norvik::Decimal amount;  // pounds, two decimals; positive for pay and for deductions alike
};

}  // namespace payrun
