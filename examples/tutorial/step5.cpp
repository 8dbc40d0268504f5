// examples/tutorial/step5.cpp - docs/tutorial.md: a queue and a timer.
#include "PayFile.h"

#include "NorvikCore/platform/dispatch/MainQueue.h"

#include <poll.h>

#include <iostream>

using namespace payroll;

int main() {
  bool running = true;
  PayFile file("pay.txt", [&running](std::size_t count) {
    std::cout << count << " amounts are in the file\n";
    running = false;
  });

  file.set("Sian", 2500.00_dec);
  file.set("Ann", 1850.50_dec);
  file.set("Sian", 2600.00_dec);
  std::cout << "three changes are made\n";

  pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
  while (running) {
    poll(&ready, 1, -1);  // sleeps until a block waits on the main queue
    dispatch_main_queue_drain();
  }
}
