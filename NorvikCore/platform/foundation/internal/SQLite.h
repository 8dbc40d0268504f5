// SQLite's connections and statements, owned, with words for what went wrong.
//
//   sqlite::Connection connection;
//   if (connection.open(path, SQLITE_OPEN_READWRITE) != SQLITE_OK) return connection.whatFailed();
//   sqlite::Statement names = connection.prepare("SELECT name FROM cookie WHERE domain = ?");
//   names.bind(1, domain);
//   while (names.step() == SQLITE_ROW) add(names.text(0));
//   names.reset();
//
// A connection and its statements are confined to one thread at a time, which their owner's lock sees to. They must not
// be open while the process forks: SQLite's locks belong to the process that took them.
#pragma once

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
  ~Statement() { sqlite3_finalize(statement_); }

  /// False where the statement could not be prepared; every step then fails.
  [[nodiscard]] explicit operator bool() const noexcept { return statement_ != nullptr; }

  /// Parameters count from 1. The bytes must stay until reset(). What is too long fails the next step.
  void bindText(int parameter, std::string_view text);
  void bindBlob(int parameter, std::string_view bytes);
  void bindInteger(int parameter, sqlite3_int64 number) { sqlite3_bind_int64(statement_, parameter, number); }
  void bindReal(int parameter, double number) { sqlite3_bind_double(statement_, parameter, number); }

  /// SQLITE_ROW, SQLITE_DONE, or what failed.
  int step() {
    return !statement_ ? SQLITE_ERROR : bindFailure_ != SQLITE_OK ? bindFailure_ : sqlite3_step(statement_);
  }
  /// One step for its effect: SQLITE_OK, or what failed. Resets.
  int run();
  void reset();

  /// Columns count from 0; views hold until the next step.
  [[nodiscard]] int type(int column) { return sqlite3_column_type(statement_, column); }
  [[nodiscard]] sqlite3_int64 integer(int column) { return sqlite3_column_int64(statement_, column); }
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

  /// `flags` are SQLITE_OPEN_...; what the connection was open for before is closed. Not open where it fails.
  int open(const std::string& name, int flags);
  /// Statements must be gone.
  void close() noexcept;
  /// The same without bringing the log into the database, in a few microseconds.
  void closeQuickly() noexcept;
  [[nodiscard]] bool isOpen() const noexcept { return connection_ != nullptr; }

  /// How long an operation waits for another process that writes.
  void setBusyTimeout(int milliseconds) { sqlite3_busy_timeout(connection_, milliseconds); }

  [[nodiscard]] Statement prepare(const char* sql);
  int run(const char* sql) { return prepare(sql).run(); }
  int run(const std::string& sql) { return run(sql.c_str()); }
  /// Several statements, with semicolons between them.
  int runAll(const char* sql) { return sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr); }
  /// How many rows the last statement has inserted, changed or deleted.
  [[nodiscard]] sqlite3_int64 changedRows() const noexcept { return sqlite3_changes64(connection_); }
  [[nodiscard]] bool isInTransaction() const noexcept { return sqlite3_get_autocommit(connection_) == 0; }
  /// The first column of the first row; false where there is none.
  bool readInteger(const char* sql, sqlite3_int64& result);
  bool readText(const char* sql, std::string& result);

  /// The result code of what failed last, without its extension.
  [[nodiscard]] int failureCode() const noexcept { return sqlite3_extended_errcode(connection_) & 0xFF; }
  /// The words for what failed last, with the system's where the system failed: "disk I/O error (No space left on
  /// device)".
  [[nodiscard]] std::string whatFailed() const;

 private:
  sqlite3* connection_ = nullptr;
  std::string openFailure_;
};

}  // namespace norvik::detail::sqlite
