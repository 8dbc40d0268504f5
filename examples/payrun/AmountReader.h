// examples/payrun/AmountReader.h - amounts as a clerk types them: "1,234.50", " 1234.5 ", "-45.10".
#pragma once

#include <optional>
#include <string_view>

#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/values/Decimal.h"

namespace payrun {

/// Keeps one formatter, as a text field does. Confined to the thread that uses it.
class AmountReader {
 public:
  AmountReader();

  enum class Problem { NoAmount, TooLarge };

  /// The amount rounded to the penny, a half away from zero. Absent if the text is not exactly one amount from
  /// -999,999,999.99 to 999,999,999.99; then `problem` holds the reason.
  [[nodiscard]] std::optional<norvik::Decimal> read(std::string_view text, Problem& problem) const;

 private:
  norvik::Ref<norvik::NKMonetaryTermDecimalNumberFormatter> formatter_;
};

}  // namespace payrun
