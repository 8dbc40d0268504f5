// NorvikCore/postgresql/DDPostgreSQLLogger.h - stores the log of many machines in one database of a PostgreSQL server.
//
//   auto logger = DDPostgreSQLLogger::initWithConnectionString("host=db.office dbname=payroll sslmode=verify-full");
//   DDLog::addLogger(logger);
//
// A component of its own: find_package(NorvikCore COMPONENTS PostgreSQL), NorvikCore::PostgreSQL.
//
// The table `norvik_log` has a row for each entry: id, time (timestamptz), machine (its host name), program, process,
// level (the message's flag: 1 error, 2 warning, 4 info, 8 debug, 16 verbose), context, thread, queue, file, function,
// line and text. `norvik_log_run` has a row for each logger of a process, so that no batch is written twice. Missing
// tables are created. A role that may not create tables needs INSERT on the first, SELECT, INSERT and UPDATE on the
// second, and usage of the first one's sequence.
//
// Connection:  as libpq reads it: host, user, TLS, and a password in the string, in ~/.pgpass or in PGPASSWORD. No part
//              of the string that could be a password appears in a message.
// Saving:      on a thread of the pool, one batch (COPY) and one transaction at a time. The logger's queue does not
//              wait, except in a flush, at the removal, and when the buffer is full. A saved entry is committed on the
//              server.
// Failures:    if the server is unreachable, or does not answer for timeout() seconds, the logger tries again after a
//              second, then after two, four and so on up to 30 seconds. Meanwhile up to maximumBufferSize() bytes of
//              entries are kept. When the buffer is full, a message waits for room while the server writes, at most
//              timeout(). Further entries are lost and counted until the server takes entries again. The system console
//              reports each cause once, and the number of lost entries. An entry that the server cannot store is left
//              out and reported.
// Once:        an entry is written once, also if the connection is lost while the server commits. If the process then
//              cannot reach the server for 30 days, the entries of that commit may be there twice, because the row of
//              `norvik_log_run` that shows whether they are there may have been deleted.
// Deleting:    only this machine's entries are deleted, by the server's clock. Rows of `norvik_log_run` are deleted for
//              all machines 30 days after their last commit, because a machine may never return to delete its own. A
//              process that commits later gets a new row. It needs DELETE and SELECT on both tables.
// Texts:       a zero byte becomes U+FFFD, because the server allows none in texts.
// The end:     messages are saved, also by TLS, up to the destructors of the program's statics: when this library is
//              loaded, it prevents OpenSSL from cleaning up when the process exits. If the program used OpenSSL before
//              that (and loads this library by dlopen), or calls OPENSSL_cleanup(), nothing is sent by TLS after the
//              clean-up: flush before it. Entries lost there are reported on the system console.
// Flush:       waits for the server, at most timeout(). The removal and the end of the process do the same.
// Forks:       the child makes its own connection; entries that are unsaved at the fork are saved by the parent.
#pragma once

#include "NorvikCore/logging/database/DDAbstractDatabaseLogger.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <memory>

namespace norvik {

class NK_EXPORT DDPostgreSQLLogger : public DDAbstractDatabaseLogger {
  NK_OBJECT(DDPostgreSQLLogger, DDAbstractDatabaseLogger)

  explicit DDPostgreSQLLogger(const NSString& connectionString);
  /// Connects at the first save. A string that libpq cannot read is reported then.
  [[nodiscard]] static Ref<DDPostgreSQLLogger> initWithConnectionString(const NSString& connectionString);

  /// How many bytes of memory unsaved entries may take; initially 16 MiB.
  [[nodiscard]] std::uint64_t maximumBufferSize() const;
  void setMaximumBufferSize(std::uint64_t bytes);
  /// How many seconds a batch, a connection or a flush may take; initially 10. Setting 0, a negative number or NaN
  /// restores 10; other numbers are limited to 0.001 to 1,000,000. Looking up the host's name may take the writing
  /// thread longer; a flush does not wait for that.
  [[nodiscard]] double timeout() const;
  void setTimeout(double seconds);
  template <detail::ChronoDuration Duration>
  void setTimeout(const Duration& duration) {
    setTimeout(detail::inSeconds(duration));
  }
  /// The number of entries lost since the logger was created. Waits as the settings do.
  [[nodiscard]] std::uint64_t lostEntryCount() const;

  /// "cocoa.quillmarch.postgresqlLogger".
  [[nodiscard]] std::optional<NSString> loggerName() override;
  /// True, except for a derived class.
  [[nodiscard]] bool takesRuns() const noexcept override;
  void flush() override;
  void willRemoveLogger() override;

 protected:
  ~DDPostgreSQLLogger() override;

  bool db_log(const DDLogMessage& message) override;
  bool db_logEntry(const DDLogEntry& entry) override;
  void db_save() override;
  void db_delete() override;
  void db_saveAndDelete() override;
  void db_forget() override;

 private:
  struct Server;
  struct State;

  template <class Entry>
  bool take(const Entry& entry);
  [[nodiscard]] bool waitForRoom();
  void start();
  void finish();
  void goOn();
  void tryAgainLater();
  void waitUntilSaved();

  const std::unique_ptr<State> state_;
};

}  // namespace norvik
