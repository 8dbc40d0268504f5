#include "NorvikCore/dispatch/internal/LiveTimer.h"

#include "NorvikCore/dispatch/internal/NamedTimers.h"

namespace norvik::detail {

TSKTimerValue::~TSKTimerValue() = default;

LiveTimer::LiveTimer(TSKDispatchQueue& wrapper, NamedTimers& timers, NamedTimer& entry)
    : SourceCore(wrapper.queue(), nullptr), wrapper_(&wrapper), timers_(timers), entry_(entry) {}

LiveTimer::~LiveTimer() = default;

void LiveTimer::handleEvent(Handler*) {
  if (const Ref<TSKDispatchQueue> wrapper = wrapper_.lock()) timers_.fired(entry_, *this);
}

}  // namespace norvik::detail
