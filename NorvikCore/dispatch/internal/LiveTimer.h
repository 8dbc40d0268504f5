// NorvikCore/dispatch/internal/LiveTimer.h - a named timer that is pending or whose block runs.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/dispatch/internal/TSKTimerValue.h"
#include "NorvikCore/platform/dispatch/internal/SourceCore.h"
#include "NorvikCore/platform/object/Weak.h"

#include <cstdint>

namespace norvik::detail {

class NamedTimers;
struct NamedTimer;

/// The source together with what its handler needs, in one allocation, because there may be tens of thousands. The
/// members are confined to the lock of the wrapper's timers.
///
/// Ownership: the table of timers holds it by a LiveTimerHandle; it does not retain the wrapper.
class LiveTimer final : public SourceCore {
 public:
  LiveTimer(TSKDispatchQueue& wrapper, NamedTimers& timers, NamedTimer& entry);
  ~LiveTimer() override;

  Block<void()> block;
  std::uint32_t starts = 0;
  bool firing = false;       // its block runs, and it has not been started again since
  Ref<TSKTimerValue> value;  // made when it is first asked for

 private:
  void handleEvent(Handler* handler) override;

  const Weak<TSKDispatchQueue> wrapper_;
  // Used while the wrapper lives.
  NamedTimers& timers_;
  NamedTimer& entry_;
};

using LiveTimerHandle = Handle<LiveTimer>;

}  // namespace norvik::detail
