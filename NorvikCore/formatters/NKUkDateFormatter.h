// NorvikCore/formatters/NKUkDateFormatter.h - dates as text in the British time zone and locale: Europe/London, en_GB.
//
//   auto formatter = make<NKUkDateFormatter>();
//   formatter->setDateFormat("dd/MM/yyyy HH:mm");
//   formatter->stringFromDate("2021-07-01"_date);      // "01/07/2021 01:00": summer time
#pragma once

#include "NorvikCore/platform/foundation/NSDateFormatter.h"

namespace norvik {

class NK_EXPORT NKUkDateFormatter : public NSDateFormatter {
  NK_OBJECT(NKUkDateFormatter, NSDateFormatter)
  NK_CODING
  ~NKUkDateFormatter() override;

 protected:
  bool init() override;
};

}  // namespace norvik
