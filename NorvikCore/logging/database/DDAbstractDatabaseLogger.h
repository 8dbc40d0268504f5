// NorvikCore/logging/database/DDAbstractDatabaseLogger.h - the base of loggers that buffer entries and write them to a
// store in batches. A derived class defines how an entry is buffered and how the buffer is written:
//
//   class OutboxLogger : public DDAbstractDatabaseLogger {
//     NK_OBJECT(OutboxLogger, DDAbstractDatabaseLogger)
//     bool db_log(const DDLogMessage& message) override {
//       buffer.push_back(message.logMsg());
//       return true;
//     }
//     void db_save() override {
//       if (!send(buffer)) return keepUnsaved();
//       buffer.clear();
//     }
//     void db_forget() override { buffer.clear(); }
//     std::vector<NSString> buffer;
//   };
//
// The buffer is saved when saveThreshold() entries are unsaved, saveInterval() seconds after the first unsaved entry,
// and when the logger is flushed or removed. Every deleteInterval() seconds, entries older than maxAge() seconds are
// deleted.
//
// Settings: take effect at once, also on a logger that was never added. On such a logger setMaxAge() and
//           setDeleteInterval() start the timer that deletes, and it runs until the logger is removed or destroyed. A
//           negative number and NaN count as 0. If a new threshold is already reached, or a new interval has already
//           passed, the logger saves at once, and only once. A time of 0 means that the time is not set: no entry is
//           unsaved, or nothing was deleted yet.
// Timers:   use the monotonic clock. Periods that pass while the logger's queue is busy count as one. If both timers
//           are due, both are handled, in the order of their due times; if these are equal, in the order in which the
//           timers were set.
// Hooks:    the operations named db_... are called on the logger's queue, and never within each other. A save that is
//           requested within a save (as by a threshold that db_save() lowers) is ignored, because a save is already
//           running. A save or a deletion that is requested within another hook is done after that hook, and so is the
//           deletion for a shorter age.
// Errors:   an NSException that leaves a hook is caught, and reported on the system console, at most ten times per
//           process. The entry of db_log() then counts as not taken; after a save the entries stay unsaved, as after
//           keepUnsaved(). std::bad_alloc has the same effect, but is not reported. Other exceptions pass.
// Threads:  settings may be changed, and savePendingLogEntries() and deleteOldLogEntries() called, on any thread. On
//           the logger's queue they take effect at once; elsewhere they are enqueued. A setting may be read on the
//           logger's queue. Elsewhere a read waits for the logging queue and then for the logger's queue, and must not
//           be done on the logging queue. Everything else runs on the logger's queue.
// The end:  unsaved entries are saved when the process exits. A logger that is destroyed without being removed does not
//           save. If a logger was added twice, removing it once stops both timers; the threshold still applies.
// Fork:     entries that are unsaved at a fork are saved by the parent alone. In a child the logger begins without
//           entries, and starts its timers with the first one.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace norvik {

class NK_EXPORT DDAbstractDatabaseLogger : public DDAbstractLogger {
  NK_OBJECT(DDAbstractDatabaseLogger, DDAbstractLogger)

  /// The number of unsaved entries at which the buffer is saved; initially 500, 0 for never.
  [[nodiscard]] std::uint64_t saveThreshold() const;
  void setSaveThreshold(std::uint64_t entries);
  /// The buffer is saved at the latest this many seconds after the first unsaved entry; initially 60, 0 or less for
  /// never.
  [[nodiscard]] double saveInterval() const;
  void setSaveInterval(double seconds);
  template <detail::ChronoDuration Duration>
  void setSaveInterval(const Duration& duration) {
    setSaveInterval(detail::inSeconds(duration));
  }
  /// Entries older than this many seconds are deleted; initially 7 days, 0 or less for none. A shorter age deletes at
  /// once.
  [[nodiscard]] double maxAge() const;
  void setMaxAge(double seconds);
  template <detail::ChronoDuration Duration>
  void setMaxAge(const Duration& duration) {
    setMaxAge(detail::inSeconds(duration));
  }
  /// How often entries are deleted, in seconds; initially 5 minutes, 0 or less for never.
  [[nodiscard]] double deleteInterval() const;
  void setDeleteInterval(double seconds);
  template <detail::ChronoDuration Duration>
  void setDeleteInterval(const Duration& duration) {
    setDeleteInterval(detail::inSeconds(duration));
  }
  /// Whether each save also deletes (db_saveAndDelete); initially false.
  [[nodiscard]] bool deleteOnEverySave() const;
  void setDeleteOnEverySave(bool deletes);

  /// Saves or deletes without waiting for the threshold or the timers. The call bypasses the logging queue, so messages
  /// that are still queued there are not saved.
  void savePendingLogEntries();
  void deleteOldLogEntries();

  /// For tests: timers and times use this clock instead of the machine's. Call it before the logger is used.
  void setTimerClock(const dispatch_manual_clock& clock);

  /// Starts both timers. A class that overrides this must call it.
  void didAddLogger() override;
  /// Saves, and stops both timers.
  void willRemoveLogger() override;
  void flush() override;

  void logMessage(const DDLogMessage& message) override;
  /// A class that overrides logMessage(), or that overrides db_log() of a class that overrides db_logEntry(), must
  /// return false.
  [[nodiscard]] bool takesRuns() const noexcept override;
  [[nodiscard]] std::size_t logMessages(const DDLogRun& run) override;

 protected:
  DDAbstractDatabaseLogger();
  /// Stops both timers, without saving.
  ~DDAbstractDatabaseLogger() override;

  // For derived classes to override. By default nothing is buffered, and the other operations do nothing.

  /// Takes the message into the buffer; returns false if the message was not taken.
  virtual bool db_log(const DDLogMessage& message);
  /// The same for an entry of a run. The default calls db_log(), for which a message must be created.
  virtual bool db_logEntry(const DDLogEntry& entry);
  /// Writes the buffer. The entries then count as written, unless keepUnsaved() was called.
  virtual void db_save();
  /// Deletes entries older than maxAge(), which is above 0.
  virtual void db_delete();
  /// Does both; maxAge() may have any value.
  virtual void db_saveAndDelete();
  /// Called in a child made by fork(), before any other hook: discards the buffer, because the parent saves it.
  virtual void db_forget();

  /// Call it in db_save() and db_saveAndDelete() if the buffer could not be written and is kept. The buffer is saved
  /// again after another saveInterval(), when as many further entries as the threshold have been taken, or when a save
  /// is requested.
  void keepUnsaved() noexcept { isKept_ = true; }

  [[nodiscard]] std::uint64_t unsavedCount() const noexcept { return unsavedCount_; }
  /// True if there is a save timer and no entry is unsaved.
  [[nodiscard]] bool saveTimerSuspended() const noexcept { return saveTimer && saveTimerSuspended_; }

  /// Returns the result of `get()`, called on the logger's queue as when a setting is read.
  template <class Get>
  [[nodiscard]] auto read(Get get) const {
    if (isOnInternalLoggerQueue()) return get();
    const dispatch_queue_t queue = const_cast<DDAbstractDatabaseLogger*>(this)->loggerQueue();
    return dispatch_sync(loggingQueue(), [&] { return dispatch_sync(queue, get); });
  }
  /// Calls `change()` on the logger's queue, as when a setting is changed.
  template <class Change>
  void change(Change change) {
    if (isOnInternalLoggerQueue()) return changeHere(change);
    dispatch_async(loggingQueue(), [self = ref(*this), change] {
      dispatch_async(self->loggerQueue(), [self, change] { self->changeHere(change); });
    });
  }

  void performSaveAndSuspendSaveTimer();
  void performDelete();
  void destroySaveTimer();
  void updateAndResumeSaveTimer();
  void createSuspendedSaveTimer();
  void destroyDeleteTimer();
  void updateDeleteTimer();
  void createAndStartDeleteTimer();

 private:
  enum class Hook : std::uint8_t { none, log, save, remove, saveAndRemove };
  class RunningHook;

  [[nodiscard]] static dispatch_queue_t loggingQueue();
  template <class Change>
  void changeHere(const Change& change) {
    noticeFork();
    change();
  }
  template <class Call>
  bool callHook(Hook hook, Call call);
  void count(bool isTaken);
  void countFirst();
  void followHook();

  [[nodiscard]] dispatch_source_t makeTimer(void (DDAbstractDatabaseLogger::*handler)());
  [[nodiscard]] dispatch_time_t timeAfter(dispatch_time_t from, double seconds) const;
  void noticeFork();

  std::uint64_t saveThreshold_ = 500;
  double saveInterval_ = 60.0;
  double maxAge_ = 7 * 24 * 60 * 60;
  double deleteInterval_ = 5 * 60;
  bool deleteOnEverySave_ = false;

  bool saveTimerSuspended_ = false;
  std::uint64_t unsavedCount_ = 0;
  dispatch_time_t unsavedTime = 0;
  dispatch_source_t saveTimer;
  dispatch_time_t lastDeleteTime = 0;
  dispatch_source_t deleteTimer;

  std::uint64_t keptCount_ = 0;  // the unsaved entries that the last save could not write
  Hook running_ = Hook::none;
  double runningAge_ = 0;                           // maxAge_ when the running hook was called
  bool isKept_ = false;                             // the running hook called keepUnsaved()
  bool savesAfter_ = false, deletesAfter_ = false;  // requested within the running hook
  std::uint32_t generation_;                        // the process to which the state belongs (kernel::forkGeneration)
  std::optional<dispatch_manual_clock> clock_;
};

}  // namespace norvik
