#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cerrno>

namespace norvik::detail {
namespace {

constinit std::atomic<int> failures{0};
constinit std::atomic<std::uint64_t> failedAttempts{0};

}  // namespace

int startThread(void* (*threadMain)(void*), void* argument) noexcept {
  if (failures.load(std::memory_order_relaxed) > 0) [[unlikely]] {
    failedAttempts.fetch_add(1, std::memory_order_relaxed);
    return EAGAIN;
  }
  sigset_t blocked;
  sigset_t before;
  sigfillset(&blocked);
  for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS, SIGPROF}) sigdelset(&blocked, own);
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_t thread{};
  const int failure = pthread_create(&thread, &attributes, threadMain, argument);
  pthread_attr_destroy(&attributes);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return failure;
}

ThreadStartsFail::ThreadStartsFail() noexcept { failures.fetch_add(1, std::memory_order_relaxed); }
ThreadStartsFail::~ThreadStartsFail() { failures.fetch_sub(1, std::memory_order_relaxed); }
std::uint64_t ThreadStartsFail::attempts() noexcept { return failedAttempts.load(std::memory_order_relaxed); }

}  // namespace norvik::detail
