// examples/dispatch/plain_loop.cpp - a program whose own loop runs the main queue's blocks.
#include "NorvikCore/platform/dispatch/MainQueue.h"

#include <poll.h>

using namespace norvik;

void runLoop(const bool& running) {
  pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
  while (running) {
    poll(&ready, 1, -1);  // and the program's other descriptors
    dispatch_main_queue_drain();
  }
}

// So far the page.

#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include <cstdio>

namespace {

/// Reads in the background and shows on the main thread, then calls `done` there.
template <class Done>
void startImport(Done done) {
  auto reader = TSKDispatchQueue::dispatchQueueWithLabel("import");
  reader->dispatchAsynchronously([done] {
    int employees = 40;  // stands for the number of employees read
    TSKDispatchQueue::mainDispatchQueue()->dispatchAsynchronously([done, employees] {
      std::printf("%d employees\n", employees);
      done();
    });
  });
}

}  // namespace

int main() {
  bool running = true;
  startImport([&running] { running = false; });
  runLoop(running);
}
