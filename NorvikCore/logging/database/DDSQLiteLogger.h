// NorvikCore/logging/database/DDSQLiteLogger.h - stores the log in an SQLite database, which can be searched while the
// log is written.
//
//   auto logger = DDSQLiteLogger::initWithPath("/home/pat/.local/share/payroll/log.db");
//   logger->setMaxAge(30 * 24 * 60 * 60);
//   DDLog::addLogger(logger);
//
//   $ sqlite3 log.db "SELECT datetime(time, 'unixepoch', 'localtime'), text FROM entry WHERE level <= 2 ORDER BY id"
//
// There is one table, `entry`, with indexes on time and on (level, time):
//
//   id        ascending in the order of logging
//   time      seconds since 1970-01-01 UTC, exact to two microseconds; the millisecond equals that of a line in a file
//   level     the message's flag: 1 error, 2 warning, 4 info, 8 debug, 16 verbose
//   context   the caller's number
//   thread    the kernel's thread id
//   queue     the label of the queue; outside any queue a name of the thread
//   file, function, line   of the log call; file and function are NULL if the call gave none
//   text      the message, or the text of the logger's formatter
//
// Saving:      each save is a transaction, in SQLite's write-ahead mode. Saved entries survive the end of the process,
//              and readers do not wait for a writer. After a loss of power the last saves may be missing.
// Deleting:    the space of deleted entries is reused. If more than half of the file is free, the file is made smaller.
//              A deletion takes at most a quarter of a second; the rest is deleted after the waiting messages. If
//              another process locks the file, it takes up to a second more.
// The file:    only this user may access it (0600), and the folders that are created for it. A link of this user is
//              followed. A folder, a pipe, another user's file or link, and a database with other content are left
//              unchanged. A file that was deleted is created again. A path that begins with "~" is in the home folder.
// Sharing:     several processes and loggers may share a file.
// Failures:    if the file cannot be written (locked for a second, full, read-only), up to maximumBufferSize() bytes of
//              entries are kept in memory, and the save is repeated: see keepUnsaved() in DDAbstractDatabaseLogger.h.
//              Further entries, and entries for which there is no memory, are lost and counted. The system console
//              reports each cause once, and the number of lost entries. While a save or a deletion waits for the lock,
//              other loggers get no message.
// Forks, exit: as for the base class; a fork waits for a running save.
#pragma once

#include "NorvikCore/logging/database/DDAbstractDatabaseLogger.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <memory>

namespace norvik {

class NK_EXPORT DDSQLiteLogger : public DDAbstractDatabaseLogger {
  NK_OBJECT(DDSQLiteLogger, DDAbstractDatabaseLogger)

  explicit DDSQLiteLogger(const NSString& path);
  /// Opens nothing; the first save opens the file.
  [[nodiscard]] static Ref<DDSQLiteLogger> initWithPath(const NSString& path);

  /// The absolute path.
  [[nodiscard]] NSString path() const;

  /// How many bytes of memory unsaved entries may take; initially 16 MiB. When they reach it they are saved,
  /// independent of the threshold.
  [[nodiscard]] std::uint64_t maximumBufferSize() const;
  void setMaximumBufferSize(std::uint64_t bytes);
  /// The number of entries lost since the logger was created. Waits as the settings do.
  [[nodiscard]] std::uint64_t lostEntryCount() const;

  /// "cocoa.quillmarch.sqliteLogger".
  [[nodiscard]] std::optional<NSString> loggerName() override;
  /// True, except for a derived class.
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
