#include "NorvikCore/platform/kernel/Thread.h"

#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/internal/ThreadRevision.h"

#include <pthread.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace norvik::kernel {

constinit thread_local std::uint32_t threadRevision = 0;

namespace {

constexpr std::size_t kernelNameBytes = 16;  // TASK_COMM_LEN, including the terminating zero
using KernelName = std::array<char, kernelNameBytes>;

constexpr std::int64_t kernelNameMilliseconds = 50;  // how long a reading of the kernel's name is valid

struct GivenName {
  std::string text;
  KernelName before;  // the kernel's name of the thread before it was named
};

// It has no destructor, so that it outlives the program's thread-local objects. The given name is freed by a destructor
// of thread-specific data, which runs after theirs.
struct ThreadState {
  std::uint32_t id;
  bool isMain;
  GivenName* given;
  KernelName kernelName;
  std::int64_t kernelNameReadAt;  // coarse milliseconds plus one; 0 before the first reading
};
thread_local constinit ThreadState state __attribute__((tls_model("initial-exec"))){};

// Registered while the library is loaded, before any fork.
[[maybe_unused]] const bool forgetsIdInChild = [] {
  atFork(nullptr, nullptr, [] {
    state.id = 0;
    ++threadRevision;
  });
  return true;
}();

const ThreadState& identify() noexcept {
  if (state.id == 0) [[unlikely]] {
    state.isMain = gettid() == getpid();
    state.id = static_cast<std::uint32_t>(gettid());
  }
  return state;
}

void freeGivenName(void*) {
  delete state.given;
  state.given = nullptr;
}

// False if the process has no key left; then the name's memory is kept until the process ends.
bool freeAtThreadEnd(const void* marker) {
  struct Key {
    pthread_key_t key{};
    bool made = pthread_key_create(&key, freeGivenName) == 0;
  };
  const auto& end = madeOnce([] { return new Key; });
  return end.made && pthread_setspecific(end.key, marker) == 0;
}

KernelName readKernelName() noexcept {
  KernelName name{};
  prctl(PR_GET_NAME, name.data());
  name.back() = '\0';
  return name;
}

bool continuesCharacter(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

KernelName shortened(std::string_view name) noexcept {
  KernelName result{};
  std::size_t length = std::min(name.size(), kernelNameBytes - 1);
  if (length < name.size()) {
    while (length > 0 && continuesCharacter(name[length])) --length;
  }
  std::copy_n(name.begin(), length, result.begin());
  return result;
}

std::int64_t coarseMilliseconds() noexcept {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace

std::uint32_t currentThreadId() noexcept { return identify().id; }

bool isMainThread() noexcept { return identify().isMain; }

void setCurrentThreadName(std::string_view name) {
  ++threadRevision;
  if (name.empty()) {
    if (!state.given) return;
    prctl(PR_SET_NAME, state.given->before.data());
    freeGivenName(nullptr);
    state.kernelNameReadAt = 0;
    return;
  }
  std::string text(name);  // first, because `name` may be the view that currentThreadName() returned
  if (!state.given) {
    state.given = new GivenName{{}, readKernelName()};
    freeAtThreadEnd(&state);
  }
  state.given->text = std::move(text);
  prctl(PR_SET_NAME, shortened(state.given->text).data());
}

std::string_view currentThreadName() noexcept {
  if (state.given) return state.given->text;
  const std::int64_t now = coarseMilliseconds() + 1;
  if (state.kernelNameReadAt == 0 || now - state.kernelNameReadAt >= kernelNameMilliseconds) {
    state.kernelName = readKernelName();
    state.kernelNameReadAt = now;
  }
  return state.kernelName.data();
}

}  // namespace norvik::kernel
