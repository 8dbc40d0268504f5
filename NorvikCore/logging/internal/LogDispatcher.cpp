#include "NorvikCore/logging/internal/LogDispatcher.h"

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/internal/GroupCore.h"
#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"
#include "NorvikCore/platform/dispatch/internal/SemaphoreCore.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/foundation/NSApplicationTermination.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <string>
#include <utility>

namespace norvik::detail {
namespace {

// Messages that one logger alone takes are handed over in runs of at most so many.
constexpr std::size_t maximumRun = 256;

// How long the end of the process waits for the loggers; how long where the caller stands in their way itself; and how
// long a fork waits for the message that is being handed out.
constexpr std::int64_t endPatience = 10 * NSEC_PER_SEC, heldPatience = 1 * NSEC_PER_SEC;
constexpr std::int64_t forkPatience = 100 * NSEC_PER_MSEC;

// How often who waits looks whether the loggers wait for him, and how often he then does what they wait for.
constexpr std::int64_t lookPause = 10 * NSEC_PER_MSEC, drainPause = NSEC_PER_MSEC / 10;

/// One logger's part in the handling of a message. What leaves it ends the process, on whichever thread it runs.
void hand(DDLoggerNode& node, const DDLogMessage& message) noexcept { node.logger()->logMessage(message); }

/// Lets go of messages that are done with, and of the permits that they took.
void finish(LogRecord* const* records, std::size_t count, const dispatch_semaphore_t& permits) noexcept {
  std::uint32_t taken = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (records[i]->hasPermit) ++taken;
    records[i]->dispose();
  }
  if (taken > 0) givePermits(permits, taken);
}

/// The queue runs nothing until the calling code returns, which is in a block of it or of a serial queue that it
/// targets.
bool isHeldUp(const dispatch_queue_t& queue) noexcept {
  if (dispatch_queue_is_held(queue)) return true;
  const TargetsLock lock;
  for (const QueueCore* target = queue.core()->target(); target != nullptr; target = target->target()) {
    const bool isExclusive = target->kind() == QueueCore::Kind::serial || target->kind() == QueueCore::Kind::main;
    if (isExclusive && isHeld(target)) return true;
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

}  // namespace

constinit LogDispatcher::Way LogDispatcher::way{};

LogDispatcher& LogDispatcher::makeShared() {
  static LogDispatcher& dispatcher = *new LogDispatcher;
  way.dispatcher.store(&dispatcher, std::memory_order_release);
  return dispatcher;
}

LogDispatcher::LogDispatcher()
    : loggingQueue(dispatch_queue_create("cocoa.quillmarch")),
      queueSemaphore(dispatch_semaphore_create(maximumQueueSize)),
      numProcessors(std::max<std::uint32_t>(kernel::processorCount(), 1)),
      loggingGroup(dispatch_group_create()) {
  loggers.reserve(4);
  way.queue = static_cast<SerialQueue*>(loggingQueue.core());
  way.permits = queueSemaphore.core();
  way.records = new LogRecordPool;
  dispatch_queue_set_specific(loggingQueue, GlobalLoggingQueueIdentityKey, GlobalLoggingQueueIdentityKey);
  kernel::atFork([] { shared().prepareFork(); }, [] { shared().endFork(); }, [] { shared().endForkInChild(); });
  atProcessEnd(&LogDispatcher::flushAtProcessEnd);
  NSNotificationCenter::defaultCenter().addObserverForName(NSApplicationWillTerminateNotification, nullptr,
                                                           &DDLog::applicationWillTerminate);
}

void LogDispatcher::addLogger(const Ref<DDLogger>& logger, int level) {
  if (!logger) return;
  dispatch_async(loggingQueue, [this, logger, level] { lt_addLogger(logger, level); });
}

void LogDispatcher::removeLogger(const Ref<DDLogger>& logger) {
  if (!logger) return;
  dispatch_async(loggingQueue, [this, logger] { lt_removeLogger(logger); });
}

void LogDispatcher::removeAllLoggers() {
  dispatch_async(loggingQueue, [this] { lt_removeAllLoggers(); });
}

void LogDispatcher::queueLogMessage(const Ref<DDLogMessage>& message, bool asynchronously) {
  if (!message) return;
  const bool hasPermit = queueSemaphore.core()->tryTake() || waitForPermit();
  const auto log = [this, message, permits = hasPermit ? queueSemaphore : nullptr] {
    lt_log(*message);
    if (permits) dispatch_semaphore_signal(permits);
  };
  if (asynchronously) {
    dispatch_async_relaxed(loggingQueue, log);
  } else {
    dispatch_sync(loggingQueue, log);
  }
}

void LogDispatcher::flush() {
  dispatch_sync(loggingQueue, [this] { lt_flush(); });
}

void LogDispatcher::lt_addLogger(const Ref<DDLogger>& logger, int level) {
  dispatch_queue_t queue = logger->loggerQueue();
  if (!queue) {
    const std::optional<NSString> name = logger->loggerName();
    queue = dispatch_queue_create(name ? name->utf8().c_str() : nullptr);
  }
  loggers.push_back(DDLoggerNode::nodeWithLogger(logger, queue, level));
  rememberLoggers();
  dispatch_async(queue, [logger] { logger->didAddLogger(); });
}

void LogDispatcher::lt_removeLogger(const Ref<DDLogger>& logger) {
  const auto found =
      std::find_if(loggers.begin(), loggers.end(), [&](const auto& node) { return node->logger() == logger; });
  if (found == loggers.end()) return;
  dispatch_async((*found)->loggerQueue(), [logger] { logger->willRemoveLogger(); });
  loggers.erase(found);
  rememberLoggers();
}

void LogDispatcher::lt_removeAllLoggers() {
  for (const Ref<DDLoggerNode>& node : loggers) {
    dispatch_async(node->loggerQueue(), [logger = node->logger()] { logger->willRemoveLogger(); });
  }
  loggers.clear();
  rememberLoggers();
}

void LogDispatcher::lt_log(const DDLogMessage& message) {
  DDLoggerNode* few[8];
  std::vector<DDLoggerNode*> many;
  DDLoggerNode** admitting = few;
  if (loggers.size() > std::size(few)) {
    many.resize(loggers.size());
    admitting = many.data();
  }
  std::size_t count = 0;
  for (const Ref<DDLoggerNode>& node : loggers) {
    // Numbers, not bits: with the usual flags and levels this admits exactly the flags that a level holds.
    if (message.logFlag() <= node->logLevel()) admitting[count++] = node.get();
  }
  if (numProcessors < 2) {
    for (std::size_t i = 0; i < count; ++i) {
      dispatch_sync(admitting[i]->loggerQueue(), [&] { hand(*admitting[i], message); });
    }
  } else if (count > 0) {
    logInParallel(message, admitting, count);
  }
}

/// The last logger runs on this thread, where its queue is idle; all others on threads of their own meanwhile.
void LogDispatcher::logInParallel(const DDLogMessage& message, DDLoggerNode* const* nodes, std::size_t count) {
  for (std::size_t i = 0; i + 1 < count; ++i) {
    dispatch_group_async(loggingGroup, nodes[i]->loggerQueue(), [node = nodes[i], &message] { hand(*node, message); });
  }
  DDLoggerNode& last = *nodes[count - 1];
  dispatch_sync(last.loggerQueue(), [&] { hand(last, message); });
  if (count > 1) dispatch_group_wait(loggingGroup, DISPATCH_TIME_FOREVER);
}

LogDispatcher::Admittance LogDispatcher::admittance(const LogRecord& record, DDLoggerNode*& sole) const noexcept {
  sole = nullptr;
  for (const Ref<DDLoggerNode>& node : loggers) {
    if (record.site().flag > node->logLevel()) continue;
    if (sole || record.hasTag() || !node->runLogger()) {
      sole = nullptr;
      return Admittance::others;
    }
    sole = node.get();
  }
  return sole ? Admittance::oneTakesRuns : Admittance::nobody;
}

/// Takes records from the queue. Where one logger alone admits several in a row and runs nobody else's code between
/// them, not even the destructor of a tag, it gets them in one block of its queue, so that nobody can tell the
/// difference; otherwise one by one.
void LogDispatcher::runRecords(Item* first, Cursor& cursor) {
  LogDispatcher& self = shared();
  const dispatch_semaphore_t permits = self.queueSemaphore;
  Item* item = first;
  while (item) {
    LogRecord* run[maximumRun];
    std::size_t count = 0, done = 0;
    run[count++] = static_cast<LogRecord*>(item);
    DDLoggerNode* sole = nullptr;
    const Admittance admitted = self.admittance(*run[0], sole);
    if (admitted == Admittance::oneTakesRuns) {
      while ((item = cursor.next()) != nullptr) {
        DDLoggerNode* other = nullptr;
        (void)self.admittance(*static_cast<LogRecord*>(item), other);
        if (count == maximumRun || other != sole) break;
        run[count++] = static_cast<LogRecord*>(item);
      }
      done = self.logRun(*sole, run, count, permits);
    } else {
      if (admitted == Admittance::others) self.lt_log(*make<DDLogMessage>(*run[0]));
      finish(run, 1, permits);
      done = 1;
      item = cursor.next();
    }
    if (self.mustStop(permits)) [[unlikely]] {
      if (item) self.leave(static_cast<LogRecord*>(item), permits);
      while (count > done) self.leave(run[--count], permits);
      return;
    }
  }
}

std::size_t LogDispatcher::logRun(DDLoggerNode& node, LogRecord* const* run, std::size_t count,
                                  const dispatch_semaphore_t& permits) {
  std::size_t done = 0;
  do {
    bool isOne = false;
    dispatch_sync(node.loggerQueue(), [&]() noexcept {
      if (!node.runLogger()->takesRuns()) {
        node.logger()->logMessage(*make<DDLogMessage>(*run[done]));
        isOne = true;
        return;
      }
      while (done < count) {
        const std::size_t taken = node.runLogger()->logRecords(run + done, count - done);
        finish(run + done, taken, permits);
        done += taken;
      }
    });
    if (isOne) finish(run + done++, 1, permits);
  } while (done < count && !mustStop(permits));
  return done;
}

/// A logger may fork, and this be the child; it may suspend the logging queue.
bool LogDispatcher::mustStop(const dispatch_semaphore_t& permits) const noexcept {
  return queueSemaphore.core() != permits.core() || way.queue->isSuspended();
}

/// For a message whose turn does not come now: it waits on, or is the business of the parent of this child.
void LogDispatcher::leave(LogRecord* record, const dispatch_semaphore_t& permits) noexcept {
  if (queueSemaphore.core() == permits.core()) {
    way.queue->putBack(record);
  } else {
    record->dispose();
  }
}

void LogDispatcher::lt_flush() {
  for (const Ref<DDLoggerNode>& node : loggers) {
    dispatch_group_async(loggingGroup, node->loggerQueue(), [logger = node->logger()] { logger->flush(); });
  }
  dispatch_group_wait(loggingGroup, DISPATCH_TIME_FOREVER);
}

// The end of the process, and forks

void LogDispatcher::rememberLoggers() {
  std::vector<Ref<DDLoggerNode>> nodes = loggers;
  runsOnMainThread = std::any_of(nodes.begin(), nodes.end(), [](const Ref<DDLoggerNode>& node) {
    return node->loggerQueue().core()->leadsToMain();
  });
  const MutexLock lock(knownMutex);
  std::swap(knownLoggers, nodes);  // what was known is destroyed without the lock
}

std::vector<Ref<DDLoggerNode>> LogDispatcher::rememberedLoggers() {
  const MutexLock lock(knownMutex);
  return knownLoggers;
}

bool LogDispatcher::isOnAnyQueue(const std::vector<Ref<DDLoggerNode>>& nodes) const {
  return dispatch_queue_is_held(loggingQueue) ||
         std::any_of(nodes.begin(), nodes.end(),
                     [](const Ref<DDLoggerNode>& node) { return dispatch_queue_is_held(node->loggerQueue()); });
}

bool LogDispatcher::waitForPermit() {
  // The messages that wait give the permits: where no worker can be started, the caller writes them itself.
  const auto takeBy = [this](std::uint64_t deadline) {
    const dispatch_semaphore_t permits = queueSemaphore;  // a message may fork, and the child has others
    return permits.core()->takeBy(deadline, HelpGoal{.queue = loggingQueue.core()});
  };
  if (!currentFrame && !kernel::isMainThread()) return takeBy(kNoDeadline);
  do {
    if (runsOnMainThread && kernel::isMainThread()) return false;
    if (currentFrame && holdsUpAny(rememberedLoggers())) return false;
  } while (!takeBy(monotonicNanoseconds() + lookPause));
  return true;
}

bool LogDispatcher::holdsUpAny(const std::vector<Ref<DDLoggerNode>>& nodes) const {
  return isHeldUp(loggingQueue) || std::any_of(nodes.begin(), nodes.end(), [](const Ref<DDLoggerNode>& node) {
           return isHeldUp(node->loggerQueue());
         });
}

void LogDispatcher::flushFromAnyQueue() {
  if (currentFrame || kernel::isMainThread()) {
    (void)flushUntil(DISPATCH_TIME_FOREVER);
  } else {
    flush();
  }
}

/// False where the time was too short. Blocks of the main queue run meanwhile where a logger's are among them and this
/// is the main thread.
bool LogDispatcher::flushUntil(dispatch_time_t deadline) {
  const dispatch_group_t done = dispatch_group_create();
  for (bool isAskedFor = false;; isAskedFor = true) {
    const std::vector<Ref<DDLoggerNode>> nodes = rememberedLoggers();  // each time: one may just have been added
    if (holdsUpAny(nodes)) {
      flushWhileHeld(nodes);
      return true;
    }
    if (!isAskedFor) dispatch_group_async(done, loggingQueue, [this] { lt_flush(); });
    const bool drains = anyWaitsForThisThread(nodes);
    const std::uint64_t pause = drains ? drainPause : lookPause;
    if (done.core()->wait(monotonicNanoseconds() + pause, GroupCore::Waiter::helps)) return true;
    if (dispatch_time(DISPATCH_TIME_NOW, 0) >= deadline) return false;
    if (drains) dispatch_main_queue_drain();
  }
}

/// The caller's block runs on the logging queue or on a logger's queue, which can run nothing else meanwhile. A logger
/// whose queue this is flushes here and now, all others on their queues.
void LogDispatcher::flushWhileHeld(const std::vector<Ref<DDLoggerNode>>& nodes) {
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
void LogDispatcher::flushAtProcessEnd() {
  LogDispatcher& self = shared();
  try {
    if (!self.flushUntil(dispatch_time(DISPATCH_TIME_NOW, endPatience))) {
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
struct LogDispatcher::ForkGate {
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
thread_local std::shared_ptr<LogDispatcher::ForkGate> LogDispatcher::forkGate;

void LogDispatcher::prepareFork() {
  const std::vector<Ref<DDLoggerNode>> nodes = rememberedLoggers();
  if (!isOnAnyQueue(nodes)) {  // else it is a fork within a message: the child goes on with it
    std::vector<dispatch_queue_t> queues;
    for (const Ref<DDLoggerNode>& node : nodes) {
      const dispatch_queue_t& queue = node->loggerQueue();
      if (kernel::isMainThread() && queue == dispatch_get_main_queue()) continue;  // stands still anyhow
      if (std::find(queues.begin(), queues.end(), queue) == queues.end()) queues.push_back(queue);
    }
    forkGate = std::make_shared<ForkGate>();
    dispatch_async(loggingQueue, [gate = forkGate, queues = std::move(queues)] {
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

void LogDispatcher::endFork() {
  if (const std::shared_ptr<ForkGate> gate = std::exchange(forkGate, nullptr)) dispatch_group_leave(gate->forking);
}

void LogDispatcher::endForkInChild() {
  forkGate = nullptr;
  queueSemaphore = dispatch_semaphore_create(maximumQueueSize);  // the messages that were waiting are the parent's
  way.permits = queueSemaphore.core();
  if (way.records->isInUse()) way.records = new LogRecordPool;
}

}  // namespace norvik::detail
