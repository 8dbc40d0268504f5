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

// How long the end of the process waits for the loggers; how long where the caller stands in their way itself; and how
// long a fork waits for the message that is being handed out.
constexpr std::int64_t endPatience = 10 * NSEC_PER_SEC, heldPatience = 1 * NSEC_PER_SEC;
constexpr std::int64_t forkPatience = 100 * NSEC_PER_MSEC;

// How often a waiting caller checks whether the loggers wait for its thread, and how often it then does what they wait
// for.
constexpr std::int64_t lookPause = 10 * NSEC_PER_MSEC, drainPause = NSEC_PER_MSEC / 10;

/// The queue runs nothing until the calling code returns, which is in a block of it or of a serial queue that it
/// targets.
bool isHeldUp(const dispatch_queue_t& queue) noexcept {
  if (dispatch_queue_is_held(queue)) return true;
  const TargetsLock lock;
  for (const QueueCore* target = queue.core()->target(); target != nullptr; target = target->target()) {
    if (target->isSerial() && isHeld(target)) return true;
  }
  return false;
}

/// The queue's blocks run on the calling thread, the main one, when that drains the main queue.
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
  std::swap(loggers_, nodes);  // what was known is destroyed without the lock
}

std::vector<Ref<DDLoggerNode>> LogLifetime::rememberedLoggers() {
  const MutexLock lock(mutex_);
  return loggers_;
}

// Callers in the way of the loggers

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

/// False where the time was too short. Blocks of the main queue run meanwhile where a logger's are among them and this
/// is the main thread.
bool LogLifetime::flushUntil(dispatch_time_t deadline) {
  const dispatch_group_t done = dispatch_group_create();
  for (bool isAskedFor = false;; isAskedFor = true) {
    const std::vector<Ref<DDLoggerNode>> nodes = rememberedLoggers();  // each time: one may just have been added
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
/// whose queue this is flushes here and now, all others on their queues.
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

/// Last of all: after everything that the program registered for its end, on whichever thread ends it.
void LogLifetime::flushAtProcessEnd() {
  try {
    if (!flushUntil(dispatch_time(DISPATCH_TIME_NOW, endPatience))) {
      kernel::writeSystemLog("DDLog: a logger did not finish in time; the process ends without it");
    }
  } catch (const std::exception& exception) {
    kernel::writeSystemLog(std::string("DDLog: the loggers could not be flushed: ") + exception.what());
  }
}

/// A child that may log must not find a logger in the middle of a message: a fork takes place between two of them. The
/// gate is a block of the logging queue that stands still while the process forks.
///
/// Others stand still on the loggers' queues: what a logger does on its own, such as rolling, is not cut in two either.
/// None of them waits for another, so that a queue which does not come to its gate holds up nothing but, for a moment,
/// the fork.
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

// Threads may fork at the same time, and each passes its own gate.
thread_local std::shared_ptr<LogLifetime::ForkGate> LogLifetime::forkGate;

void LogLifetime::prepareFork() {
  const std::vector<Ref<DDLoggerNode>> nodes = rememberedLoggers();
  if (!isOnAnyQueue(nodes)) {  // else it is a fork within a message: the child goes on with it
    std::vector<dispatch_queue_t> queues;
    for (const Ref<DDLoggerNode>& node : nodes) {
      const dispatch_queue_t& queue = node->loggerQueue();
      if (kernel::isMainThread() && queue == dispatch_get_main_queue()) continue;  // stands still anyhow
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
    // A queue that takes longer may wait for the very thread that forks.
    dispatch_group_wait(forkGate->approaching, dispatch_time(DISPATCH_TIME_NOW, forkPatience));
  }
}

void LogLifetime::endFork() {
  if (const std::shared_ptr<ForkGate> gate = std::exchange(forkGate, nullptr)) dispatch_group_leave(gate->forking);
}

}  // namespace norvik::detail
