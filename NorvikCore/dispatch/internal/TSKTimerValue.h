// NorvikCore/dispatch/internal/TSKTimerValue.h - the "TimerValue" in a table of timers.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

namespace norvik::detail {

/// Shows in a table of timers that the timer is live: one object for each live timer.
class TSKTimerValue final : public NSObject {
  NK_OBJECT(TSKTimerValue, NSObject)
  ~TSKTimerValue() override;
};

}  // namespace norvik::detail
