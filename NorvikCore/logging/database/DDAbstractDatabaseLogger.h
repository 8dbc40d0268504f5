// NorvikCore/logging/database/DDAbstractDatabaseLogger.h - the base of loggers that keep entries in a buffer and write
// them to a store in batches. A class derived from it says how an entry is buffered, and how the buffer is written:
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
// It saves when saveThreshold() entries are unsaved, saveInterval() seconds after the first unsaved one, and when it is
// flushed or removed. Every deleteInterval() seconds it has entries deleted that are older than maxAge() seconds.
//
// Settings: work at once, on a logger that was never added too: then setMaxAge() and setDeleteInterval() start the
//           timer that deletes, and it runs until the logger is removed or destroyed. A negative number or one that is
//           no number is as good as 0. A threshold that is reached already, or an interval that has passed already,
//           saves at once, and once. 0 is also the time that is not set: no entry is unsaved, nothing was deleted yet.
// Timers:   on the monotonic clock. Periods that pass while the logger's queue is busy count as one. If both timers are
//           due, both are handled, the one that was due first before the other; of two due at the same time the one
//           that was set first.
// Hooks:    the operations named db_... are called on the logger's queue, and never within each other: a save that is
//           asked for within a save is the one that is running (as by a threshold that db_save() lowers); a save or a
//           deletion that is asked for within another hook follows it, and so does the deletion for a shorter age.
// Errors:   an NSException that leaves a hook is caught, and reported on the system console, ten times at most per
//           process. The entry of db_log() then counts as not taken; after a save the entries stay unsaved, as by
//           keepUnsaved(). So it is with std::bad_alloc, which is not reported. Other exceptions pass.
// Threads:  settings, savePendingLogEntries() and deleteOldLogEntries() from anywhere, at once on the logger's queue,
//           elsewhere in their turn. Reading a setting is possible on the logger's queue; elsewhere it waits for the
//           logging queue and then for the logger's, and must not be done on the logging queue. Everything else on
//           the logger's queue.
// The end:  what is unsaved is saved when the process exits. A logger that is destroyed without being removed does not
//           save. Where one logger was added twice, removing it once ends both timers; the threshold goes on.
// Fork:     what is unsaved at a fork is saved by the parent alone. In a child the logger begins with no entry, and its
//           timers with the first one.
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

  /// Saves when so many entries are unsaved; 500 unless set, 0 for never.
  [[nodiscard]] std::uint64_t saveThreshold() const;
  void setSaveThreshold(std::uint64_t entries);
  /// Saves at the latest so many seconds after the first unsaved entry; 60 unless set, 0 or less for never.
  [[nodiscard]] double saveInterval() const;
  void setSaveInterval(double seconds);
  template <detail::ChronoDuration Duration>
  void setSaveInterval(const Duration& duration) {
    setSaveInterval(detail::inSeconds(duration));
  }
  /// Entries older than so many seconds are deleted; 7 days unless set, 0 or less for none. A shorter age deletes at
  /// once.
  [[nodiscard]] double maxAge() const;
  void setMaxAge(double seconds);
  template <detail::ChronoDuration Duration>
  void setMaxAge(const Duration& duration) {
    setMaxAge(detail::inSeconds(duration));
  }
  /// How often entries are deleted; 5 minutes unless set, 0 or less for never.
  [[nodiscard]] double deleteInterval() const;
  void setDeleteInterval(double seconds);
  template <detail::ChronoDuration Duration>
  void setDeleteInterval(const Duration& duration) {
    setDeleteInterval(detail::inSeconds(duration));
  }
  /// Deletes with every save (db_saveAndDelete); not unless set.
  [[nodiscard]] bool deleteOnEverySave() const;
  void setDeleteOnEverySave(bool deletes);

  /// Saves or deletes without waiting for the count or the timers. Not through the logging queue: messages that still
  /// wait there are not among what is saved.
  void savePendingLogEntries();
  void deleteOldLogEntries();

  /// For tests: timers and times are of this clock, and not the machine's. Before the logger is used.
  void setTimerClock(const dispatch_manual_clock& clock);

  /// A class that overrides this takes starting both timers over.
  void didAddLogger() override;
  /// Saves, and stops both timers.
  void willRemoveLogger() override;
  void flush() override;

  void logMessage(const DDLogMessage& message) override;
  /// A class that overrides logMessage(), or db_log() of one that overrides db_logEntry(), must not take runs.
  [[nodiscard]] bool takesRuns() const noexcept override;
  [[nodiscard]] std::size_t logMessages(const DDLogRun& run) override;

 protected:
  DDAbstractDatabaseLogger();
  /// Stops both timers, without saving.
  ~DDAbstractDatabaseLogger() override;

  // What a derived class overrides. Unless it does, nothing is buffered, and the others do nothing.

  /// Takes the message into the buffer; false where it was not taken.
  virtual bool db_log(const DDLogMessage& message);
  /// The same for an entry of a run. Unless overridden it asks db_log(), for which a message must be made.
  virtual bool db_logEntry(const DDLogEntry& entry);
  /// Writes the buffer. It then counts as written unless keepUnsaved() was called.
  virtual void db_save();
  /// Deletes what is older than maxAge(), which is above 0.
  virtual void db_delete();
  /// Both in one; maxAge() may be anything.
  virtual void db_saveAndDelete();
  /// In a child made by fork(), before any other hook: what is in the buffer is the parent's, and is dropped here.
  virtual void db_forget();

  /// In db_save() and db_saveAndDelete(): the buffer could not be written, and is kept. It is written after another
  /// saveInterval(), when as many more entries as the threshold have come, or when a save is asked for.
  void keepUnsaved() noexcept { isKept_ = true; }

  [[nodiscard]] std::uint64_t unsavedCount() const noexcept { return unsavedCount_; }
  /// True where there is a timer and no entry is unsaved.
  [[nodiscard]] bool saveTimerSuspended() const noexcept { return saveTimer && saveTimerSuspended_; }

  /// Gives what `get()` gives on the logger's queue, as a setting is read.
  template <class Get>
  [[nodiscard]] auto read(Get get) const {
    if (isOnInternalLoggerQueue()) return get();
    const dispatch_queue_t queue = const_cast<DDAbstractDatabaseLogger*>(this)->loggerQueue();
    return dispatch_sync(loggingQueue(), [&] { return dispatch_sync(queue, get); });
  }
  /// Calls `change()` on the logger's queue, as a setting is changed.
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

  std::uint64_t keptCount_ = 0;  // of the unsaved entries, those that could not be saved the last time
  Hook running_ = Hook::none;
  double runningAge_ = 0;                           // maxAge_ when that hook was called
  bool isKept_ = false;                             // it asked for its entries to be kept
  bool savesAfter_ = false, deletesAfter_ = false;  // was asked for within it
  std::uint32_t generation_;                        // the process that the state is of (kernel::forkGeneration)
  std::optional<dispatch_manual_clock> clock_;
};

}  // namespace norvik
