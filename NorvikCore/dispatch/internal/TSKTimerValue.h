// NorvikCore/dispatch/internal/TSKTimerValue.h - a named timer that is live.
#pragma once

#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/object/Block.h"

#include <cstdint>

namespace norvik::detail {

/// What a table of timers gives as "TimerValue". Confined to the lock of its wrapper's timers, save `source`.
class TSKTimerValue final : public NSObject {
  NK_OBJECT(TSKTimerValue, NSObject)

  TSKTimerValue(std::uint64_t madeAs, const dispatch_queue_t& queue);
  ~TSKTimerValue() override;

  const std::uint64_t number;  // tells it from other timers that the name has had
  const dispatch_source_t source;
  Block<void()> block;
  std::uint64_t starts = 0;
  bool firing = false;  // its block runs, and it has not been started again meanwhile
};

}  // namespace norvik::detail
