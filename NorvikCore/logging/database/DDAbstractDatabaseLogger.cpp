#include "NorvikCore/logging/database/DDAbstractDatabaseLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/internal/ExceptionReports.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <new>
#include <utility>

namespace norvik {
namespace {

constexpr std::uint64_t timerLeeway = 1;  // nanoseconds

constinit detail::ExceptionReports exceptionReports{"DDAbstractDatabaseLogger"};

/// `seconds` must be above 0. Returns at least one nanosecond, at most 292 years.
std::int64_t nanosecondsOf(double seconds) {
  constexpr double mostSeconds = 9.2e9;
  return std::max<std::int64_t>(static_cast<std::int64_t>(std::min(seconds, mostSeconds) * 1e9), 1);
}

}  // namespace

DDAbstractDatabaseLogger::DDAbstractDatabaseLogger() : generation_(kernel::forkGeneration()) {}

DDAbstractDatabaseLogger::~DDAbstractDatabaseLogger() {
  destroySaveTimer();
  destroyDeleteTimer();
}

bool DDAbstractDatabaseLogger::db_log(const DDLogMessage&) { return false; }
bool DDAbstractDatabaseLogger::db_logEntry(const DDLogEntry& entry) { return db_log(entry.message()); }
void DDAbstractDatabaseLogger::db_save() {}
void DDAbstractDatabaseLogger::db_delete() {}
void DDAbstractDatabaseLogger::db_saveAndDelete() {}
void DDAbstractDatabaseLogger::db_forget() {}

// Hooks

/// A hook is running while this object exists, also if an exception ends the hook.
class DDAbstractDatabaseLogger::RunningHook {
 public:
  RunningHook(DDAbstractDatabaseLogger& logger, Hook hook) : logger_(logger) {
    logger.running_ = hook;
    logger.runningAge_ = logger.maxAge_;
    logger.isKept_ = false;
  }
  RunningHook(const RunningHook&) = delete;
  RunningHook& operator=(const RunningHook&) = delete;
  ~RunningHook() { logger_.running_ = Hook::none; }

 private:
  DDAbstractDatabaseLogger& logger_;
};

/// Returns false if the hook raised an NSException, or if there was no memory.
template <class Call>
bool DDAbstractDatabaseLogger::callHook(Hook hook, Call call) {
  const RunningHook running(*this, hook);
  try {
    call();
    return true;
  } catch (const NSException& exception) {
    exceptionReports.add(exception);
    return false;
  } catch (const std::bad_alloc&) {  // not reported, because that would need memory too
    return false;
  }
}

/// Does the save and the deletion that were requested within a hook.
void DDAbstractDatabaseLogger::followHook() {
  if (std::exchange(savesAfter_, false)) performSaveAndSuspendSaveTimer();
  if (std::exchange(deletesAfter_, false)) performDelete();
}

/// After a fork, drops the state of the parent, whose timers do not fire in this process.
void DDAbstractDatabaseLogger::noticeFork() {
  const std::uint32_t generation = kernel::forkGeneration();
  if (generation_ == generation || running_ != Hook::none) return;
  generation_ = generation;
  unsavedCount_ = keptCount_ = 0;
  unsavedTime = 0;
  lastDeleteTime = 0;
  savesAfter_ = deletesAfter_ = false;
  const bool hadSaveTimer{saveTimer}, hadDeleteTimer{deleteTimer};
  destroySaveTimer();
  destroyDeleteTimer();
  if (hadSaveTimer) createSuspendedSaveTimer();
  if (hadDeleteTimer) createAndStartDeleteTimer();
  db_forget();
}

// Receiving

void DDAbstractDatabaseLogger::logMessage(const DDLogMessage& message) {
  noticeFork();
  bool isTaken = false;
  if (callHook(Hook::log, [&] { isTaken = db_log(message); })) count(isTaken);
  followHook();
}

bool DDAbstractDatabaseLogger::takesRuns() const noexcept { return true; }

std::size_t DDAbstractDatabaseLogger::logMessages(const DDLogRun& run) {
  noticeFork();
  std::size_t taken = 0;
  // If a hook forks, the rest of the run is handled by the parent.
  for (const std::uint32_t generation = generation_; taken < run.count() && kernel::forkGeneration() == generation;
       ++taken) {
    bool isTaken = false;
    if (callHook(Hook::log, [&] { isTaken = db_logEntry(run[taken]); })) count(isTaken);
    followHook();
  }
  return std::max<std::size_t>(taken, 1);
}

void DDAbstractDatabaseLogger::count(bool isTaken) {
  if (!isTaken) return;
  ++unsavedCount_;
  if (saveThreshold_ - 1 < unsavedCount_ - keptCount_) {  // a threshold of 0 becomes the greatest number
    performSaveAndSuspendSaveTimer();
  } else if (unsavedCount_ == 1) {
    countFirst();
  }
}

void DDAbstractDatabaseLogger::countFirst() {
  unsavedTime = timeAfter(0, 0);
  updateAndResumeSaveTimer();
}

// Saving and deleting

void DDAbstractDatabaseLogger::performSaveAndSuspendSaveTimer() {
  noticeFork();
  switch (running_) {
    case Hook::save:
    case Hook::saveAndRemove:
      return;  // a save is already running
    case Hook::log:
    case Hook::remove:
      savesAfter_ = true;
      return;
    case Hook::none:
      break;
  }
  if (unsavedCount_ > 0) {
    const bool isDone = deleteOnEverySave_ ? callHook(Hook::saveAndRemove, [this] { db_saveAndDelete(); })
                                           : callHook(Hook::save, [this] { db_save(); });
    if (!isDone || isKept_) {
      keptCount_ = unsavedCount_;
      countFirst();
      return followHook();
    }
  }
  unsavedCount_ = keptCount_ = 0;
  unsavedTime = 0;
  if (saveTimer && !saveTimerSuspended_) {
    dispatch_suspend(saveTimer);
    saveTimerSuspended_ = true;
  }
  followHook();
}

void DDAbstractDatabaseLogger::performDelete() {
  noticeFork();
  if (!(maxAge_ > 0)) return;
  if (running_ != Hook::none) {
    const bool deletes = running_ == Hook::remove || running_ == Hook::saveAndRemove;
    if (!deletes || runningAge_ != maxAge_) deletesAfter_ = true;
    return;
  }
  callHook(Hook::remove, [this] { db_delete(); });
  lastDeleteTime = timeAfter(0, 0);
  followHook();
}

void DDAbstractDatabaseLogger::savePendingLogEntries() {
  if (isOnInternalLoggerQueue()) return performSaveAndSuspendSaveTimer();
  dispatch_async(loggerQueue(), [self = ref(*this)] { self->performSaveAndSuspendSaveTimer(); });
}

void DDAbstractDatabaseLogger::deleteOldLogEntries() {
  if (isOnInternalLoggerQueue()) return performDelete();
  dispatch_async(loggerQueue(), [self = ref(*this)] { self->performDelete(); });
}

void DDAbstractDatabaseLogger::didAddLogger() {
  noticeFork();
  createSuspendedSaveTimer();
  updateAndResumeSaveTimer();  // entries may be unsaved since the logger was removed
  createAndStartDeleteTimer();
}

void DDAbstractDatabaseLogger::willRemoveLogger() {
  performSaveAndSuspendSaveTimer();
  destroySaveTimer();
  destroyDeleteTimer();
}

void DDAbstractDatabaseLogger::flush() { performSaveAndSuspendSaveTimer(); }

// Timers

void DDAbstractDatabaseLogger::setTimerClock(const dispatch_manual_clock& clock) { clock_ = clock; }

/// A `from` of 0 means the present.
dispatch_time_t DDAbstractDatabaseLogger::timeAfter(dispatch_time_t from, double seconds) const {
  const std::int64_t delta = seconds > 0 ? nanosecondsOf(seconds) : 0;
  return clock_ && from == 0 ? clock_->time(delta) : dispatch_time(from, delta);
}

dispatch_source_t DDAbstractDatabaseLogger::makeTimer(void (DDAbstractDatabaseLogger::*handler)()) {
  dispatch_source_t timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, loggerQueue());
  if (clock_) dispatch_source_set_clock(timer, *clock_);
  dispatch_source_set_event_handler(timer, [logger = Weak<DDAbstractDatabaseLogger>(this), handler] {
    if (const Ref<DDAbstractDatabaseLogger> alive = logger.lock()) (alive.get()->*handler)();
  });
  return timer;
}

void DDAbstractDatabaseLogger::createSuspendedSaveTimer() {
  if (saveTimer || !(saveInterval_ > 0)) return;
  saveTimer = makeTimer(&DDAbstractDatabaseLogger::performSaveAndSuspendSaveTimer);
  saveTimerSuspended_ = true;
}

void DDAbstractDatabaseLogger::updateAndResumeSaveTimer() {
  if (!saveTimer || !(saveInterval_ > 0) || unsavedTime == 0) return;
  dispatch_source_set_timer(saveTimer, timeAfter(unsavedTime, saveInterval_),
                            static_cast<std::uint64_t>(nanosecondsOf(saveInterval_)), timerLeeway);
  if (saveTimerSuspended_) {
    saveTimerSuspended_ = false;
    dispatch_resume(saveTimer);
  }
}

void DDAbstractDatabaseLogger::destroySaveTimer() {
  if (!saveTimer) return;
  dispatch_source_cancel(saveTimer);
  if (std::exchange(saveTimerSuspended_, false)) dispatch_resume(saveTimer);
  saveTimer = nullptr;
}

void DDAbstractDatabaseLogger::createAndStartDeleteTimer() {
  if (deleteTimer || !(deleteInterval_ > 0) || !(maxAge_ > 0)) return;
  deleteTimer = makeTimer(&DDAbstractDatabaseLogger::performDelete);
  updateDeleteTimer();
  dispatch_resume(deleteTimer);
}

void DDAbstractDatabaseLogger::updateDeleteTimer() {
  if (!deleteTimer || !(deleteInterval_ > 0) || !(maxAge_ > 0)) return;
  dispatch_source_set_timer(deleteTimer, timeAfter(lastDeleteTime, deleteInterval_),
                            static_cast<std::uint64_t>(nanosecondsOf(deleteInterval_)), timerLeeway);
}

void DDAbstractDatabaseLogger::destroyDeleteTimer() {
  if (!deleteTimer) return;
  dispatch_source_cancel(deleteTimer);
  deleteTimer = nullptr;
}

// Settings

dispatch_queue_t DDAbstractDatabaseLogger::loggingQueue() { return DDLog::loggingQueue(); }

std::uint64_t DDAbstractDatabaseLogger::saveThreshold() const {
  return read([this] { return saveThreshold_; });
}

void DDAbstractDatabaseLogger::setSaveThreshold(std::uint64_t entries) {
  change([this, entries] {
    if (entries == saveThreshold_) return;
    saveThreshold_ = entries;
    if (entries - 1 < unsavedCount_) performSaveAndSuspendSaveTimer();
  });
}

double DDAbstractDatabaseLogger::saveInterval() const {
  return read([this] { return saveInterval_; });
}

void DDAbstractDatabaseLogger::setSaveInterval(double seconds) {
  change([this, seconds] {
    if (seconds == saveInterval_) return;
    saveInterval_ = seconds;
    if (!(seconds > 0)) return destroySaveTimer();
    createSuspendedSaveTimer();
    updateAndResumeSaveTimer();
  });
}

double DDAbstractDatabaseLogger::maxAge() const {
  return read([this] { return maxAge_; });
}

void DDAbstractDatabaseLogger::setMaxAge(double seconds) {
  change([this, seconds] {
    const double before = maxAge_;
    if (seconds == before) return;
    maxAge_ = seconds;
    if (!(seconds > 0)) return destroyDeleteTimer();
    if (before > 0 && seconds > before) return;
    performDelete();
    if (deleteTimer) {
      updateDeleteTimer();
    } else {
      createAndStartDeleteTimer();
    }
  });
}

double DDAbstractDatabaseLogger::deleteInterval() const {
  return read([this] { return deleteInterval_; });
}

void DDAbstractDatabaseLogger::setDeleteInterval(double seconds) {
  change([this, seconds] {
    if (seconds == deleteInterval_) return;
    deleteInterval_ = seconds;
    if (!(seconds > 0)) return destroyDeleteTimer();
    if (deleteTimer) {
      updateDeleteTimer();
    } else {
      createAndStartDeleteTimer();
    }
  });
}

bool DDAbstractDatabaseLogger::deleteOnEverySave() const {
  return read([this] { return deleteOnEverySave_; });
}

void DDAbstractDatabaseLogger::setDeleteOnEverySave(bool deletes) {
  change([this, deletes] { deleteOnEverySave_ = deletes; });
}

}  // namespace norvik
