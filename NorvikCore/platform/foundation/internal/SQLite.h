// NorvikCore/platform/foundation/internal/SQLite.h - owning wrappers of SQLite's connections and statements, with texts
// for errors.
//
//   sqlite::Connection connection;
//   if (connection.open(path, SQLITE_OPEN_READWRITE) != SQLITE_OK) return connection.whatFailed();
//   sqlite::Statement names = connection.prepare("SELECT name FROM cookie WHERE domain = ?");
//   names.bindText(1, domain);
//   while (names.step() == SQLITE_ROW) add(names.bytes(0));
//   names.reset();
//
// SQLite itself is loaded with the first connection, or by load().
//
// A connection and its statements are confined to one thread at a time, by their owner's lock. They must not be open
// while the process forks, because SQLite's locks belong to the process that took them.
#pragma once

#include "NorvikCore/platform/foundation/internal/SQLiteLibrary.h"

#include <sqlite3.h>

#include <string>
#include <string_view>
#include <utility>

namespace norvik::detail::sqlite {

class Statement {
 public:
  Statement() = default;
  explicit Statement(sqlite3_stmt* statement) noexcept : statement_(statement) {}
  Statement(Statement&& other) noexcept
      : statement_(std::exchange(other.statement_, nullptr)), bindFailure_(other.bindFailure_) {}
  Statement& operator=(Statement&& other) noexcept {
    std::swap(statement_, other.statement_);
    std::swap(bindFailure_, other.bindFailure_);
    return *this;
  }
  ~Statement() {
    if (statement_) library().sqlite3_finalize(statement_);
  }

  /// False if the statement could not be prepared; every step then fails.
  [[nodiscard]] explicit operator bool() const noexcept { return statement_ != nullptr; }

  /// Parameters count from 1. The bytes must stay valid until reset(). If they are too long, the next step fails.
  void bindText(int parameter, std::string_view text);
  void bindBlob(int parameter, std::string_view bytes);
  void bindInteger(int parameter, sqlite3_int64 number) {
    if (statement_) library().sqlite3_bind_int64(statement_, parameter, number);
  }
  void bindReal(int parameter, double number) {
    if (statement_) library().sqlite3_bind_double(statement_, parameter, number);
  }

  /// SQLITE_ROW, SQLITE_DONE, or the code of the error.
  int step() {
    return !statement_ ? SQLITE_ERROR : bindFailure_ != SQLITE_OK ? bindFailure_ : library().sqlite3_step(statement_);
  }
  /// One step, for its effect, and a reset: SQLITE_OK, or the code of the error.
  int run();
  void reset();

  /// Columns count from 0; views are valid until the next step.
  [[nodiscard]] int type(int column) { return library().sqlite3_column_type(statement_, column); }
  [[nodiscard]] sqlite3_int64 integer(int column) { return library().sqlite3_column_int64(statement_, column); }
  [[nodiscard]] std::string_view bytes(int column);

 private:
  sqlite3_stmt* statement_ = nullptr;
  int bindFailure_ = SQLITE_OK;
};

class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { close(); }

  /// `flags` are SQLITE_OPEN_...; a connection that was open is closed. Not open if it fails, as it does with
  /// SQLITE_ERROR if SQLite cannot be loaded.
  int open(const std::string& name, int flags);
  /// All statements must have been destroyed.
  void close() noexcept;
  /// The same without copying the log to the database; takes a few microseconds.
  void closeQuickly() noexcept;
  [[nodiscard]] bool isOpen() const noexcept { return connection_ != nullptr; }

  /// The time that an operation waits for another process that writes.
  void setBusyTimeout(int milliseconds) { library().sqlite3_busy_timeout(connection_, milliseconds); }

  /// All below need an open connection, except whatFailed().
  [[nodiscard]] Statement prepare(const char* sql);
  int run(const char* sql) { return prepare(sql).run(); }
  int run(const std::string& sql) { return run(sql.c_str()); }
  /// Runs several statements, separated by semicolons.
  int runAll(const char* sql) { return library().sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr); }
  /// The number of rows that the last statement has inserted, changed or deleted.
  [[nodiscard]] sqlite3_int64 changedRows() const noexcept { return library().sqlite3_changes64(connection_); }
  [[nodiscard]] bool isInTransaction() const noexcept { return library().sqlite3_get_autocommit(connection_) == 0; }
  /// The first column of the first row; false if there is none.
  bool readInteger(const char* sql, sqlite3_int64& result);
  bool readText(const char* sql, std::string& result);

  /// The result code of the last error, without its extension.
  [[nodiscard]] int failureCode() const noexcept { return library().sqlite3_extended_errcode(connection_) & 0xFF; }
  /// The text of the last error, with the system's text if the system failed: "disk I/O error (No space left on
  /// device)".
  [[nodiscard]] std::string whatFailed() const;

 private:
  sqlite3* connection_ = nullptr;
  std::string openFailure_;
};

}  // namespace norvik::detail::sqlite
