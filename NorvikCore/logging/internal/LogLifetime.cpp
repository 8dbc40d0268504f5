#include "NorvikCore/logging/internal/LogLifetime.h"

#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/internal/GroupCore.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

namespace norvik::detail {
namespace {

// How long the end of the process waits for the loggers; how long it waits if the caller itself holds them up; and how
// long a fork waits for the message that is being handed out.
constexpr std::int64_t endPatience = 10 * NSEC_PER_SEC, heldPatience = 1 * NSEC_PER_SEC;
constexpr std::int64_t forkPatience = 100 * NSEC_PER_MSEC;

// How often a waiting caller checks whether a logger needs its thread, and how often it then drains the main queue.
constexpr std::int64_t lookPause = 10 * NSEC_PER_MSEC, drainPause = NSEC_PER_MSEC / 10;

/// True if the queue can run nothing until the calling code returns, because that runs in a block of the queue or of a
/// serial queue that it targets.
bool isHeldUp(const dispatch_queue_t& queue) noexcept {
  if (dispatch_queue_is_held(queue)) return true;
  const TargetsLock lock;
  for (const QueueCore* target = queue.core()->target(); target != nullptr; target = target->target()) {
    if (target->isSerial() && isHeld(target)) return true;
  }
  return false;
}

/// True if the queue's blocks run on the calling thread: it is the main thread, and they run when it drains the main
/// queue.
bool waitsForThisThread(const dispatch_queue_t& queue) noexcept {
  return kernel::isMainThread() && queue.core()->leadsToMain();
}

bool anyWaitsForThisThread(const std::vector<Ref<DDLoggerNode>>& nodes) noexcept {
  return std::any_of(nodes.begin(), nodes.end(),
                     [](const Ref<DDLoggerNode>& node) { return waitsForThisThread(node->loggerQueue()); });
}

LogLifetime* the = nullptr;  // for functions that take no argument

}  // namespace

LogLifetime::LogLifetime(const dispatch_queue_t& loggingQueue, Block<void()> flush)
    : queue_(loggingQueue), flush_(std::move(flush)) {}

void LogLifetime::watch() {
  the = this;
  kernel::atFork([] { the->prepareFork(); }, &endFork, [] { forkGate = nullptr; });
  atProcessEnd([] { the->flushAtProcessEnd(); });
}

void LogLifetime::rememberLoggers(std::vector<Ref<DDLoggerNode>> nodes) {
  runsOnMainThread_ = std::any_of(nodes.begin(), nodes.end(), [](const Ref<DDLoggerNode>& node) {
    return node->loggerQueue().core()->leadsToMain();
  });
  const MutexLock lock(mutex_);
  std::swap(loggers_, nodes);  // the former loggers are released after the lock
}

std::vector<Ref<DDLoggerNode>> LogLifetime::rememberedLoggers() {
  const MutexLock lock(mutex_);
  return loggers_;
}

// Callers that hold the loggers up

bool LogLifetime::holdsUpLoggers() {
  if (!currentFrame && !kernel::isMainThread()) return false;
  if (runsOnMainThread_ && kernel::isMainThread()) return true;
  return currentFrame && holdsUpAny(rememberedLoggers());
}

bool LogLifetime::holdsUpAny(const std::vector<Ref<DDLoggerNode>>& nodes) const {
  return isHeldUp(queue_) || std::any_of(nodes.begin(), nodes.end(),
                                         [](const Ref<DDLoggerNode>& node) { return isHeldUp(node->loggerQueue()); });
}

bool LogLifetime::isOnAnyQueue(const std::vector<Ref<DDLoggerNode>>& nodes) const {
  return dispatch_queue_is_held(queue_) || std::any_of(nodes.begin(), nodes.end(), [](const Ref<DDLoggerNode>& node) {
           return dispatch_queue_is_held(node->loggerQueue());
         });
}

void LogLifetime::flushFromAnyQueue() {
  if (currentFrame || kernel::isMainThread()) {
    (void)flushUntil(DISPATCH_TIME_FOREVER);
  } else {
    dispatch_sync(queue_, [this] { flush_(); });
  }
}

/// Returns false if the deadline passed. If a logger's blocks run on the main queue and this is the main thread, it
/// drains the main queue while it waits.
bool LogLifetime::flushUntil(dispatch_time_t deadline) {
  const dispatch_group_t done = dispatch_group_create();
  for (bool isAskedFor = false;; isAskedFor = true) {
    const std::vector<Ref<DDLoggerNode>> nodes = rememberedLoggers();  // each time, because a logger may be added
    if (holdsUpAny(nodes)) {
      flushWhileHeld(nodes);
      return true;
    }
    if (!isAskedFor) dispatch_group_async(done, queue_, [this] { flush_(); });
    const bool drains = anyWaitsForThisThread(nodes);
    const std::uint64_t pause = drains ? drainPause : lookPause;
    if (done.core()->wait(monotonicNanoseconds() + pause, GroupCore::Waiter::helps)) return true;
    if (dispatch_time(DISPATCH_TIME_NOW, 0) >= deadline) return false;
    if (drains) dispatch_main_queue_drain();
  }
}

/// The caller's block runs on the logging queue or on a logger's queue, which can run nothing else meanwhile. A logger
/// whose queue is held flushes on this thread, all others flush on their queues.
void LogLifetime::flushWhileHeld(const std::vector<Ref<DDLoggerNode>>& nodes) {
  const dispatch_group_t done = dispatch_group_create();
  for (const Ref<DDLoggerNode>& node : nodes) {
    if (isHeldUp(node->loggerQueue())) {
      node->logger()->flush();
    } else {
      dispatch_group_async(done, node->loggerQueue(), [logger = node->logger()] { logger->flush(); });
    }
  }
  dispatch_group_wait(done, dispatch_time(DISPATCH_TIME_NOW, heldPatience));
}

/// Runs after everything that the program registered for its end, on the thread that ends the process.
void LogLifetime::flushAtProcessEnd() {
  try {
    if (!flushUntil(dispatch_time(DISPATCH_TIME_NOW, endPatience))) {
      kernel::writeSystemLog("DDLog: a logger did not finish in time; the process ends without it");
    }
  } catch (const std::exception& exception) {
    kernel::writeSystemLog(std::string("DDLog: the loggers could not be flushed: ") + exception.what());
  }
}

/// A child that may log must not find a logger in the middle of a message, so a fork takes place between two messages.
/// The gate is a block of the logging queue that blocks its queue while the process forks.
///
/// Further blocks do the same on the loggers' queues, so that the child does not find a logger in the middle of its own
/// work, such as rolling. No block waits for another. So a queue that does not reach its gate delays only the fork, and
/// only until the fork's time limit.
struct LogLifetime::ForkGate {
  ForkGate() {
    dispatch_group_enter(approaching);
    dispatch_group_enter(forking);
  }

  void standStill() const {
    dispatch_group_leave(approaching);
    dispatch_group_wait(forking, DISPATCH_TIME_FOREVER);
  }

  const dispatch_group_t approaching = dispatch_group_create(), forking = dispatch_group_create();
};

// Several threads may fork at the same time, each with its own gate.
thread_local std::shared_ptr<LogLifetime::ForkGate> LogLifetime::forkGate;

void LogLifetime::prepareFork() {
  const std::vector<Ref<DDLoggerNode>> nodes = rememberedLoggers();
  if (!isOnAnyQueue(nodes)) {  // otherwise the fork is made within a message, and the child continues with it
    std::vector<dispatch_queue_t> queues;
    for (const Ref<DDLoggerNode>& node : nodes) {
      const dispatch_queue_t& queue = node->loggerQueue();
      if (kernel::isMainThread() && queue == dispatch_get_main_queue()) continue;  // its thread is forking
      if (std::find(queues.begin(), queues.end(), queue) == queues.end()) queues.push_back(queue);
    }
    forkGate = std::make_shared<ForkGate>();
    dispatch_async(queue_, [gate = forkGate, queues = std::move(queues)] {
      for (const dispatch_queue_t& queue : queues) {
        dispatch_group_enter(gate->approaching);
        dispatch_async(queue, [gate] { gate->standStill(); });
      }
      gate->standStill();
    });
    // A queue that takes longer may be waiting for the thread that forks.
    dispatch_group_wait(forkGate->approaching, dispatch_time(DISPATCH_TIME_NOW, forkPatience));
  }
}

void LogLifetime::endFork() {
  if (const std::shared_ptr<ForkGate> gate = std::exchange(forkGate, nullptr)) dispatch_group_leave(gate->forking);
}

}  // namespace norvik::detail
