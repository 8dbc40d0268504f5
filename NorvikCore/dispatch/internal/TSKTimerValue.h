// NorvikCore/dispatch/internal/TSKTimerValue.h - a named timer that is pending or whose block runs.
#pragma once

#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/object/Block.h"

#include <cstdint>

namespace norvik::detail {

/// The "TimerValue" in a table of timers. Confined to the lock of its wrapper's timers, except `source`.
class TSKTimerValue final : public NSObject {
  NK_OBJECT(TSKTimerValue, NSObject)

  TSKTimerValue(std::uint64_t madeAs, dispatch_source_t timer);
  ~TSKTimerValue() override;

  const std::uint64_t number;  // distinguishes it from earlier and later timers of the same name
  const dispatch_source_t source;
  Block<void()> block;
  std::uint64_t starts = 0;
  bool firing = false;  // its block runs, and it has not been started again since
};

}  // namespace norvik::detail
