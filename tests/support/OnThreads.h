// tests/support/OnThreads.h - runs the same work on several threads, which start it at the same time.
#pragma once

#include <latch>
#include <thread>
#include <vector>

namespace norvik::test {

/// Calls `work` with 0, 1, 2 ... `count` - 1, each on its own thread, and returns when all calls have returned.
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
