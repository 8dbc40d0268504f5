#include "NorvikCore/platform/foundation/NSApplicationTermination.h"

#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/values/NSException.h"

#include <atomic>
#include <cstdlib>
#include <vector>

namespace norvik {

constexpr NSString NSApplicationWillTerminateNotification = "NSApplicationWillTerminateNotification";

namespace detail {
namespace {

std::atomic<bool> posted{false};
std::atomic<std::uint32_t> postingGeneration{0};

void postUnlessPosted() {
  if (posted.load() || kernel::forkGeneration() != postingGeneration.load()) return;
  try {
    NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification);
  } catch (const NSException& exception) {
    NSLog("An observer of %@ raised %s", NSApplicationWillTerminateNotification, exception.what());
  }
}

struct EndFunctions {
  Mutex mutex;
  std::vector<void (*)()> functions NK_GUARDED_BY(mutex);
  std::uint32_t generation NK_GUARDED_BY(mutex) = kernel::forkGeneration();
};

// Null until the first request for a function. If there is none, the end of the process creates nothing.
std::atomic<EndFunctions*> endFunctions{nullptr};

std::atomic<void (*)()> lastFunction{nullptr};

EndFunctions& allEndFunctions() {
  auto& functions = kernel::madeOnce([] { return new EndFunctions; });
  endFunctions.store(&functions);
  return functions;
}

// Runs when the loader finalises this library: after every function given to atexit() and all static destructors of the
// program.
[[gnu::destructor]] void endProcess() {
  callEndFunctions();
  if (void (*function)() = lastFunction.load()) function();
}

}  // namespace

// A forked child does not lock the mutex, because a thread of its parent may have held it.
void callEndFunctions() NK_NO_THREAD_SAFETY_ANALYSIS {
  EndFunctions* const all = endFunctions.load();
  if (!all || all->generation != kernel::forkGeneration()) return;
  std::vector<void (*)()> functions;
  {
    const MutexLock lock(all->mutex);
    functions = all->functions;
  }
  for (void (*function)() : functions) function();
}

void atProcessEnd(void (*function)()) {
  EndFunctions& all = allEndFunctions();
  const MutexLock lock(all.mutex);
  all.functions.push_back(function);
}

void atLastProcessEnd(void (*function)()) { lastFunction.store(function); }

void postTerminationAtExit() {
  postingGeneration.store(kernel::forkGeneration());
  std::atexit(postUnlessPosted);
}

void noteNotification(const NSString& name) noexcept {
  if (name == NSApplicationWillTerminateNotification) posted.store(true);
}

}  // namespace detail
}  // namespace norvik
