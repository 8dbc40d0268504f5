// examples/decisions/deadlocks.cpp - docs/decisions/deadlocks.md: a synchronous block for a queue that the code is
// inside runs in place.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include <iostream>

using namespace norvik;

int main() {
  auto payroll = TSKDispatchQueue::dispatchQueueWithLabel("payroll");
  auto reports = TSKDispatchQueue::dispatchQueueWithLabel("reports");

  payroll->dispatchSynchronously([&] {
    payroll->dispatchSynchronously([] { std::cout << "in place\n"; });  // on the bare queue: BUG, and the end
  });

  // Also through another queue: the outer block of `payroll` waits for this one.
  payroll->dispatchSynchronously([&] {
    reports->dispatchSynchronously([&] { payroll->dispatchSynchronously([] { std::cout << "in place too\n"; }); });
  });

  // Another choice, made when the queue is created: the block is left out.
  auto strict = TSKDispatchQueue::dispatchQueueWithLabel("strict", TSKDeadlockSkip);
  strict->dispatchSynchronously([&] {
    strict->dispatchSynchronously([] { std::cout << "not printed\n"; });
    std::cout << std::boolalpha << "inside: " << strict->isInCurrentQueueStack() << "\n";
  });
}
