#include "NorvikCore/platform/kernel/Fork.h"

#include <pthread.h>

#include <atomic>
#include <new>

namespace norvik::kernel {
namespace {

constinit std::atomic<std::uint32_t> generation{0};

// Registered while the library is loaded: before anybody forks, and before all other handlers.
[[maybe_unused]] const bool countsForks = [] {
  atFork(nullptr, nullptr, [] { generation.fetch_add(1, std::memory_order_relaxed); });
  return true;
}();

}  // namespace

void atFork(ForkHandler before, ForkHandler inParent, ForkHandler inChild) {
  if (pthread_atfork(before, inParent, inChild) != 0) throw std::bad_alloc();
}

std::uint32_t forkGeneration() noexcept { return generation.load(std::memory_order_relaxed); }

}  // namespace norvik::kernel
