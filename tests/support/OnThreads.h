// tests/support/OnThreads.h - the same work on several threads, which all start at once.
#pragma once

#include <latch>
#include <thread>
#include <vector>

namespace norvik::test {

/// Calls `work` with 0, 1, 2 ... `count` - 1, each on a thread of its own, and returns once all are done.
template <class Work>
void onThreads(int count, Work work) {
  std::latch start(count);
  std::vector<std::thread> running;
  for (int number = 0; number < count; ++number) {
    running.emplace_back([&, number] {
      start.arrive_and_wait();
      work(number);
    });
  }
  for (std::thread& thread : running) thread.join();
}

}  // namespace norvik::test
