// NorvikCore/postgresql/DDPostgreSQLLogger.h - keeps the log of many machines in one database of a PostgreSQL server.
//
//   auto logger = DDPostgreSQLLogger::initWithConnectionString("host=db.office dbname=payroll sslmode=verify-full");
//   DDLog::addLogger(logger);
//
// In a component of its own: find_package(NorvikCore COMPONENTS PostgreSQL), NorvikCore::PostgreSQL.
//
// The table `norvik_log` has a row for each entry: id, time (timestamptz), machine (its host name), program, process,
// level (the message's flag: 1 error, 2 warning, 4 info, 8 debug, 16 verbose), context, thread, queue, file, function,
// line and text. `norvik_log_run` has a row for each logger of a process, so that no batch is written twice. Both are
// made where they are missing; a role that may not make tables needs INSERT on the first, SELECT, INSERT and UPDATE
// on the second, and usage of the first one's sequence.
//
// Connection:  what libpq reads: host, user, TLS, a password in the string, in ~/.pgpass or in PGPASSWORD. No part of
//              the string that could be a password appears in a message.
// Saving:      on a thread of the pool, a batch (COPY) and a transaction at a time; the logger's queue does not wait,
//              except in a flush, at the removal, and when the buffer is full. A saved entry is committed on the
//              server.
// Failures:    if the server is not there, or does not answer for timeout() seconds, it is tried again after a second,
//              then after two, four and so on up to 30 seconds; entries are kept meanwhile, up to maximumBufferSize()
//              bytes. When that is full, a message waits for room while the server writes, timeout() at most; what
//              then comes is lost and counted until the server takes entries again. The system console says each cause
//              once, and how many were lost. An entry that the server cannot store is left out and reported.
// Once:        an entry is written once, also if the connection is lost while the server commits.
// Deleting:    this machine's entries only, by the server's clock. It needs DELETE and SELECT on both tables.
// Texts:       a zero byte becomes U+FFFD, because the server has none in texts.
// The end:     what the program logs is saved, by TLS too, up to the destructors of its statics: this library, when it
//              is loaded, keeps OpenSSL from cleaning up when the process exits. If the program used OpenSSL before
//              that (and loads this library by dlopen), or calls OPENSSL_cleanup(), nothing is sent by TLS after the
//              clean-up: flush before it. What is lost there is said on the system console.
// Flush:       waits for the server, timeout() at most, and so do the removal and the end of the process.
// Forks:       the child makes a connection of its own; what is unsaved is the parent's.
#pragma once

#include "NorvikCore/logging/database/DDAbstractDatabaseLogger.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <memory>

namespace norvik {

class NK_EXPORT DDPostgreSQLLogger : public DDAbstractDatabaseLogger {
  NK_OBJECT(DDPostgreSQLLogger, DDAbstractDatabaseLogger)

  explicit DDPostgreSQLLogger(const NSString& connectionString);
  /// Connects with the first save. A string that libpq cannot read is reported then.
  [[nodiscard]] static Ref<DDPostgreSQLLogger> initWithConnectionString(const NSString& connectionString);

  /// Bytes of memory that unsaved entries may take; 16 MiB unless set.
  [[nodiscard]] std::uint64_t maximumBufferSize() const;
  void setMaximumBufferSize(std::uint64_t bytes);
  /// Seconds that a batch, a connection or a flush may take; 10 unless set, and again if it is set to 0, less, or no
  /// number. A thousandth at least, a million at most. Looking up the host's name may take the writing thread longer; a
  /// flush does not wait for that.
  [[nodiscard]] double timeout() const;
  void setTimeout(double seconds);
  template <detail::ChronoDuration Duration>
  void setTimeout(const Duration& duration) {
    setTimeout(detail::inSeconds(duration));
  }
  /// How many entries were lost since the logger was made. Waits as the settings do.
  [[nodiscard]] std::uint64_t lostEntryCount() const;

  /// "cocoa.quillmarch.postgresqlLogger".
  [[nodiscard]] std::optional<NSString> loggerName() override;
  /// Unless it is of a class derived from this one.
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
