// examples/payrun/PayItem.h - one line of pay: an amount that an employee gets, or that is deducted, on a day.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/Decimal.h"

namespace payrun {

enum class ItemKind { Pay, Bonus, Deduction };

/// The original date of an item that was moved to the next day because of its time of day.
struct MovedFrom {
  std::size_t line = 0;   // of items.csv, from 1
  norvik::Date day;       // the day before the one on which the item counts
  std::string_view date;  // as typed
};

/// The texts belong to the current record, and are valid until the next record is read.
struct PayItem {
  std::size_t employee = 0;  // index in the employer's employees
  norvik::Date day;          // a payroll date: 00:00:00 UTC
  ItemKind kind = ItemKind::Pay;
  norvik::Decimal amount;  // pounds, two decimals; positive for pay and for deductions alike
  std::string_view description;
  std::optional<MovedFrom> moved;
};

}  // namespace payrun
