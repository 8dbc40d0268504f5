#include "NorvikCore/platform/kernel/Fork.h"

#include "NorvikCore/platform/kernel/internal/ForkGate.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <linux/membarrier.h>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <ctime>
#include <new>
#include <utility>
#include <vector>

namespace norvik::kernel {
namespace detail {

constinit thread_local ForkGateCell* ownCell __attribute__((tls_model("initial-exec"))) = nullptr;
constinit std::atomic<std::uint32_t> gate{gateOpenUnordered};

namespace {

constinit std::atomic<std::uint32_t> generation{0};
constinit Gate openGateOfThisProcess = gateOpenUnordered;
constinit std::atomic<ForkGateCell*> cells{nullptr};  // of all threads so far; never freed, but reused
thread_local constinit bool isEnding __attribute__((tls_model("initial-exec"))) = false;

struct Handlers {
  ForkHandler before, inParent, inChild;
};
/// Guarded by the gate: changed while forks are held, called while the gate is closed. Made while the library is
/// loaded, like the key of endOfThread(), so that no fork finds these statics incomplete.
std::vector<Handlers>& handlersAlone() {
  static auto& all = *new std::vector<Handlers>;
  return all;
}

bool orderedByKernel() noexcept {
  return syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0 ||
         (syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0 &&
          syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0);
}

ForkGateCell* newCell() noexcept {
  for (ForkGateCell* cell = cells.load(std::memory_order_acquire); cell; cell = cell->next) {
    std::uint32_t unused = 0;
    if (cell->isUsed.load(std::memory_order_relaxed) == 0 &&
        cell->isUsed.compare_exchange_strong(unused, 1, std::memory_order_acquire))
      return cell;
  }
  auto* cell = new ForkGateCell;
  cell->next = cells.load(std::memory_order_relaxed);
  while (!cells.compare_exchange_weak(cell->next, cell, std::memory_order_release, std::memory_order_relaxed)) {
  }
  return cell;
}

/// Thread-specific data are destroyed after the thread-local objects. If a thread takes a lock even later, it has no
/// cell; it then gets a new one and returns it at the release.
pthread_key_t endOfThread() noexcept {
  static const pthread_key_t key = [] {
    pthread_key_t made = 0;
    if (pthread_key_create(&made, [](void*) {
          isEnding = true;
          if (!ownCell) return;
          ownCell->isGivenBack = true;
          if (ownCell->depth.load(std::memory_order_relaxed) == 0) giveCellBack();
        }) != 0)
      std::abort();
    return made;
  }();
  return key;
}

void closeGate() noexcept {
  ForkGateCell& own = holdForksHere();  // this thread may take locks while the gate is closed
  std::uint32_t open = openGateOfThisProcess;
  if (own.depth.load(std::memory_order_relaxed) == 1) {
    own.isForking.store(true, std::memory_order_seq_cst);
    while (!gate.compare_exchange_strong(open, gateClosed)) {
      open = openGateOfThisProcess;
      norvik::detail::futexWait(gate, gateClosed);
    }
    own.closedGate = true;
  } else {
    // This thread forks while it holds a lock. Another fork that closed the gate is waiting for that lock.
    own.closedGate = gate.compare_exchange_strong(open, gateClosed);
  }
  orderOtherThreads();  // afterwards a lock that they hold is visible in their cells, or they see the closed gate
  for (ForkGateCell* cell = cells.load(std::memory_order_acquire); cell; cell = cell->next) {
    if (cell == &own) continue;
    for (int look = 0; cell->depth.load(std::memory_order_seq_cst) != 0 && !cell->isForking.load(); ++look) {
      if (look < 100) {
        norvik::detail::spinPause();
      } else {
        sched_yield();
      }
    }
  }
}

void openGate() noexcept {
  if (std::exchange(ownCell->closedGate, false)) {
    gate.store(openGateOfThisProcess, std::memory_order_seq_cst);
    norvik::detail::futexWake(&gate, INT_MAX);
  }
  ownCell->isForking.store(false, std::memory_order_release);
  releaseForksHere();
}

void before() {
  closeGate();
  auto& all = handlersAlone();
  for (auto handlers = all.rbegin(); handlers != all.rend(); ++handlers) {
    if (handlers->before) handlers->before();
  }
}

void inParent() {
  for (const Handlers& handlers : handlersAlone()) {
    if (handlers.inParent) handlers.inParent();
  }
  openGate();
}

void inChild() {
  generation.fetch_add(1, std::memory_order_relaxed);
  for (ForkGateCell* cell = cells.load(std::memory_order_relaxed); cell; cell = cell->next) {
    if (cell == ownCell) {
      cell->closedGate = true;  // even if another thread of the parent closed it
      continue;
    }
    // The cell's thread does not exist in this process.
    cell->closedGate = false;
    cell->depth.store(0, std::memory_order_relaxed);
    cell->isForking.store(false, std::memory_order_relaxed);
    cell->isUsed.store(0, std::memory_order_relaxed);
  }
  for (const Handlers& handlers : handlersAlone()) {
    if (handlers.inChild) handlers.inChild();
  }
  openGate();
}

// Runs while the library is loaded: before any fork, and before all other handlers, so that the gate closes last.
[[maybe_unused]] const bool gateIsSet = [] {
  handlersAlone();
  endOfThread();
#if !defined(__SANITIZE_THREAD__)
  if (orderedByKernel()) openGateOfThisProcess = gateOpen;
  gate.store(openGateOfThisProcess, std::memory_order_seq_cst);
#endif
  atFork(before, inParent, inChild);
  return true;
}();

}  // namespace

void orderOtherThreads() noexcept {
  if (openGateOfThisProcess == gateOpenUnordered || orderedByKernel()) return;
  // A filter of system calls was installed meanwhile. Processors write back their stores within microseconds.
  const timespec plenty{0, 10'000'000};
  nanosleep(&plenty, nullptr);
}

ForkGateCell& findOwnCell() noexcept {
  ownCell = newCell();
  ownCell->isGivenBack = isEnding;
  if (!isEnding) pthread_setspecific(endOfThread(), ownCell);
  return *ownCell;
}

void passGateSlowly(ForkGateCell& own) noexcept {
  for (;;) {
    own.depth.exchange(1, std::memory_order_seq_cst);
    if (gate.load(std::memory_order_seq_cst) != gateClosed) return;
    own.depth.store(0, std::memory_order_release);
    while (gate.load(std::memory_order_acquire) == gateClosed) norvik::detail::futexWait(gate, gateClosed);
  }
}

void giveCellBack() noexcept {
  ForkGateCell* cell = std::exchange(ownCell, nullptr);
  cell->isGivenBack = false;
  cell->isUsed.store(0, std::memory_order_release);
}

}  // namespace detail

void atFork(ForkHandler before, ForkHandler inParent, ForkHandler inChild) {
  if (pthread_atfork(before, inParent, inChild) != 0) throw std::bad_alloc();
}

void atForkAlone(ForkHandler before, ForkHandler inParent, ForkHandler inChild) {
  static constinit std::atomic_flag isChanging;
  const ForkHold hold;
  while (isChanging.test_and_set(std::memory_order_acquire)) sched_yield();
  detail::handlersAlone().push_back({before, inParent, inChild});
  isChanging.clear(std::memory_order_release);
}

void holdForks() noexcept { detail::holdForksHere(); }
void releaseForks() noexcept { detail::releaseForksHere(); }

std::uint32_t forkGeneration() noexcept { return detail::generation.load(std::memory_order_relaxed); }

}  // namespace norvik::kernel
