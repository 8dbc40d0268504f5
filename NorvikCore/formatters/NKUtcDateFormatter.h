// NorvikCore/formatters/NKUtcDateFormatter.h - dates as text in UTC, the default calendar and the default locale
// (en_GB): the form in which payroll dates are stored and compared.
//
//   auto formatter = make<NKUtcDateFormatter>();
//   formatter->setDateFormat("dd/MM/yyyy HH:mm");
//   formatter->stringFromDate("2021-07-01"_date);      // "01/07/2021 00:00"
//
//   NKUtcDateFormatter::localizedStringFromDate("2021-07-01"_date, NSDateFormatterFullStyle, NSDateFormatterNoStyle);
//                                                      // "Thursday, 1 July 2021"
#pragma once

#include "NorvikCore/platform/foundation/NSDateFormatter.h"

namespace norvik {

class NK_EXPORT NKUtcDateFormatter : public NSDateFormatter {
  NK_OBJECT(NKUtcDateFormatter, NSDateFormatter)
  NK_CODING
  ~NKUtcDateFormatter() override;

  /// The date in the given styles; NSDateFormatter.h shows examples. The main thread keeps one formatter for this;
  /// every other thread creates a formatter for each call.
  [[nodiscard]] static NSString localizedStringFromDate(Date date, NSDateFormatterStyle dateStyle,
                                                        NSDateFormatterStyle timeStyle);

 protected:
  bool init() override;
};

}  // namespace norvik
