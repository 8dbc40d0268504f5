// examples/decisions/timers.cpp - docs/decisions/timers.md: which time a named timer keeps.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/dispatch/Source.h"

#include <iostream>

using namespace norvik;

int main() {
  dispatch_manual_clock clock;  // moves only by advance(): no test has to wait
  auto queue = TSKDispatchQueue::dispatchQueueWithLabel("save");
  queue->setTimerClock(clock);

  // advance() does not return before the block is enqueued; a synchronous block comes after it.
  const auto wait = [&](int seconds) {
    for (int second = 0; second < seconds; ++second) {
      clock.advance(NSEC_PER_SEC);
      queue->dispatchSynchronously([] {});
    }
    std::cout << "after " << seconds << " s\n";
  };
  const auto schedule = [&](double seconds, TSKTimerBehavior behavior) {
    queue->scheduleTimerWithName("save", seconds, behavior, [] { std::cout << "saved\n"; });
    queue->dispatchSynchronously([] {});  // the request has taken effect
  };

  schedule(10, TSKTimerKeepEarliest);
  schedule(20, TSKTimerKeepEarliest);  // the timer stays at 10 s, but 20 s is recorded
  schedule(15, TSKTimerKeepEarliest);  // earlier than the recorded 20 s: the timer is at 15 s now
  wait(12);
  wait(3);

  schedule(10, TSKTimerRestart);
  wait(8);
  schedule(10, TSKTimerRestart);  // counted again from now
  wait(8);
  wait(2);
}
