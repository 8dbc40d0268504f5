// examples/coming-from/queues.cpp - docs/coming-from-qt-or-boost.md: a strand, a timer, a parallel loop, a result.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/dispatch/Apply.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"

#include <iostream>
#include <numeric>
#include <vector>

using namespace norvik;

int main() {
  auto strand = TSKDispatchQueue::dispatchQueueWithLabel("pay");
  int total = 0;  // used only on the queue
  for (int pay = 1; pay <= 4; ++pay) strand->dispatchAsynchronously([&total, pay] { total += pay; });
  strand->dispatchSynchronously([&total] { std::cout << total << "\n"; });  // after all of them

  const dispatch_semaphore_t fired = dispatch_semaphore_create(0);
  strand->scheduleTimerWithName("save", 0.01, TSKTimerRestart, [fired] {
    std::cout << "saved\n";
    dispatch_semaphore_signal(fired);
  });
  dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER);

  std::vector<int> squares(5);
  dispatch_apply(squares.size(), dispatch_get_global_queue(),
                 [&squares](std::size_t i) { squares[i] = static_cast<int>(i * i); });
  std::cout << std::accumulate(squares.begin(), squares.end(), 0) << "\n";
}
