#include "NorvikCore/platform/foundation/internal/SQLite.h"

#include "NorvikCore/platform/kernel/SystemError.h"

#include <errno.h>

namespace norvik::detail::sqlite {
namespace {

std::string words(sqlite3* connection) {
  std::string text = sqlite3_errmsg(connection);
  const int code = sqlite3_extended_errcode(connection) & 0xFF;
  if (code == SQLITE_IOERR || code == SQLITE_CANTOPEN) {
    const int kept = sqlite3_system_errno(connection);
    const int error = kept != 0 ? kept : errno;  // for a failed commit SQLite stores none, but errno is still set
    if (error != 0) text += " (" + kernel::errorText(error) + ")";
  }
  return text;
}

}  // namespace

void Statement::bindText(int parameter, std::string_view text) {
  if (!statement_) return;
  const int result = sqlite3_bind_text64(statement_, parameter, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  if (result != SQLITE_OK) bindFailure_ = result;
}

void Statement::bindBlob(int parameter, std::string_view bytes) {
  // An empty view may have a null pointer, which would bind NULL.
  const char* start = bytes.empty() ? "" : bytes.data();
  if (!statement_) return;
  const int result = sqlite3_bind_blob64(statement_, parameter, start, bytes.size(), SQLITE_STATIC);
  if (result != SQLITE_OK) bindFailure_ = result;
}

int Statement::run() {
  errno = 0;  // words() reads it
  const int result = step();
  reset();
  return result == SQLITE_DONE || result == SQLITE_ROW ? SQLITE_OK : result;
}

void Statement::reset() {
  if (!statement_) return;
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
  bindFailure_ = SQLITE_OK;
}

std::string_view Statement::bytes(int column) {
  const void* start = sqlite3_column_blob(statement_, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  return {static_cast<const char*>(start), start ? size : 0};
}

int Connection::open(const std::string& name, int flags) {
  close();
  const int result = sqlite3_open_v2(name.c_str(), &connection_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  if (result != SQLITE_OK) {
    openFailure_ = connection_ ? words(connection_) : sqlite3_errstr(result);
    close();
  }
  return result;
}

void Connection::close() noexcept { sqlite3_close(std::exchange(connection_, nullptr)); }

void Connection::closeQuickly() noexcept {
  if (connection_) sqlite3_db_config(connection_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  close();
}

Statement Connection::prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v3(connection_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  return Statement(statement);
}

bool Connection::readInteger(const char* sql, sqlite3_int64& result) {
  Statement statement = prepare(sql);
  if (statement.step() != SQLITE_ROW) return false;
  result = statement.integer(0);
  return true;
}

bool Connection::readText(const char* sql, std::string& result) {
  Statement statement = prepare(sql);
  if (statement.step() != SQLITE_ROW) return false;
  result = statement.bytes(0);
  return true;
}

std::string Connection::whatFailed() const { return connection_ ? words(connection_) : openFailure_; }

}  // namespace norvik::detail::sqlite
