// NorvikCore/logging/database/DDSQLiteLogger.h - keeps the log in an SQLite database, where it can be searched while it
// is written.
//
//   auto logger = DDSQLiteLogger::initWithPath("/home/pat/.local/share/payroll/log.db");
//   logger->setMaxAge(30 * 24 * 60 * 60);
//   DDLog::addLogger(logger);
//
//   $ sqlite3 log.db "SELECT datetime(time, 'unixepoch', 'localtime'), text FROM entry WHERE level <= 2 ORDER BY id"
//
// One table, `entry`, with indexes on time and on level (and then time):
//
//   id        ascending in the order of logging
//   time      seconds since 1970-01-01 UTC, right to two microseconds; the millisecond is that of the line in a file
//   level     the message's flag: 1 error, 2 warning, 4 info, 8 debug, 16 verbose
//   context   the caller's number
//   thread    the kernel's id of the thread
//   queue     the label of the queue; off any queue a name of the thread
//   file, function, line   of the log call; NULL where it gave none
//   text      the message, or what the logger's formatter makes of it
//
// Saving:      a transaction a save, in SQLite's write-ahead mode: what was saved is there whatever becomes of the
//              process, and readers wait for no writer. After a loss of power the last saves may be missing.
// Deleting:    the place of deleted entries is used again; where more than half of the file is free it is made smaller.
//              Deleting takes a quarter of a second at most; the rest is deleted after the messages that wait. While
//              another process locks the file it takes a second more.
// The file:    is this user's only, 0600, and so are the folders that are made for it. A link of this user's is
//              followed. A folder, a pipe, another user's file or link, and a database of something else are left as
//              they are. A file that was deleted is made again. A path that begins with "~" is in the home folder.
// Sharing:     processes and loggers may share one file.
// Failures:    where the file cannot be written (locked for a second, full, read-only) entries are kept in memory,
//              maximumBufferSize() bytes of them, and tried again: see keepUnsaved() in DDAbstractDatabaseLogger.h.
//              What comes when that is full, or finds no memory, is lost and counted. The system console says each
//              cause once, and how many were lost. While a save or a deletion waits for the lock, other loggers get no
//              message.
// Forks, exit: as the base; a fork waits for a save.
#pragma once

#include "NorvikCore/logging/database/DDAbstractDatabaseLogger.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <memory>

namespace norvik {

class NK_EXPORT DDSQLiteLogger : public DDAbstractDatabaseLogger {
  NK_OBJECT(DDSQLiteLogger, DDAbstractDatabaseLogger)

  explicit DDSQLiteLogger(const NSString& path);
  /// Opens nothing yet: that is done with the first save.
  [[nodiscard]] static Ref<DDSQLiteLogger> initWithPath(const NSString& path);

  /// Absolute.
  [[nodiscard]] NSString path() const;

  /// Bytes of memory that unsaved entries may take; 16 MiB unless set. When they do, they are saved, whatever the
  /// threshold.
  [[nodiscard]] std::uint64_t maximumBufferSize() const;
  void setMaximumBufferSize(std::uint64_t bytes);
  /// How many entries were lost since the logger was made. Waits as the settings do.
  [[nodiscard]] std::uint64_t lostEntryCount() const;

  /// "cocoa.quillmarch.sqliteLogger".
  [[nodiscard]] std::optional<NSString> loggerName() override;
  /// Unless it is of a class derived from this one.
  [[nodiscard]] bool takesRuns() const noexcept override;
  void willRemoveLogger() override;

 protected:
  ~DDSQLiteLogger() override;

  bool db_log(const DDLogMessage& message) override;
  bool db_logEntry(const DDLogEntry& entry) override;
  void db_save() override;
  void db_delete() override;
  void db_saveAndDelete() override;
  void db_forget() override;

 private:
  struct State;

  template <class Entry>
  bool take(const Entry& entry);
  void save(bool deletes);
  void deleteLater();

  const std::unique_ptr<State> state_;
};

}  // namespace norvik
