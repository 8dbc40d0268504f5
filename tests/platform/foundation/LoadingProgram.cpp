// A program in which two threads ask for the standard preferences first: one of them in an initialiser of a shared
// object, while it holds the loader's lock, and the other one waits for that lock to load SQLite.
//
//   loading_program PLUGIN: prints "both" once both have read a preference
#include "NorvikCore/platform/foundation/NSUserDefaults.h"

#include <dlfcn.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

using namespace norvik;

namespace {

std::atomic<pid_t> asker{0};
std::atomic<bool> isLoading{false}, hasBegun{false};

void readPreference() { (void)NSUserDefaults::standardUserDefaults().integerForKey("rate"); }

/// 'R' while it runs, 'S' while it waits.
char stateOf(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t end = line.rfind(')');
  return end == line.npos || end + 2 >= line.size() ? 'X' : line[end + 2];
}

}  // namespace

/// Called by the plugin's initialiser.
extern "C" __attribute__((visibility("default"))) void duringLoading() {
  isLoading = true;
  while (!hasBegun) sched_yield();
  for (char state = 'R'; state != 'S' && state != 'X'; state = stateOf(asker)) sched_yield();
  readPreference();
}

int main(int count, char** arguments) {
  if (count != 2) return 2;
  std::thread other([] {
    asker = gettid();
    while (!isLoading) sched_yield();
    hasBegun = true;
    readPreference();
  });
  if (dlopen(arguments[1], RTLD_NOW) == nullptr) return 3;
  other.join();
  std::puts("both");
}
