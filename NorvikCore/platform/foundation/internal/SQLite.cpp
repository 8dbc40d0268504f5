#include "NorvikCore/platform/foundation/internal/SQLite.h"

#include "NorvikCore/platform/kernel/SystemError.h"
#include "NorvikCore/platform/values/NSException.h"

#include <errno.h>

namespace norvik::detail::sqlite {
namespace {

std::string words(sqlite3* connection) {
  std::string text = library().sqlite3_errmsg(connection);
  const int code = library().sqlite3_extended_errcode(connection) & 0xFF;
  if (code == SQLITE_IOERR || code == SQLITE_CANTOPEN) {
    const int kept = library().sqlite3_system_errno(connection);
    const int error = kept != 0 ? kept : errno;  // for a failed commit SQLite stores none, but errno is still set
    if (error != 0) text += " (" + kernel::errorText(error) + ")";
  }
  return text;
}

}  // namespace

void Statement::bindText(int parameter, std::string_view text) {
  if (!statement_) return;
  const int result =
      library().sqlite3_bind_text64(statement_, parameter, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  if (result != SQLITE_OK) bindFailure_ = result;
}

void Statement::bindBlob(int parameter, std::string_view bytes) {
  // An empty view may have a null pointer, which would bind NULL.
  const char* start = bytes.empty() ? "" : bytes.data();
  if (!statement_) return;
  const int result = library().sqlite3_bind_blob64(statement_, parameter, start, bytes.size(), SQLITE_STATIC);
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
  library().sqlite3_reset(statement_);
  library().sqlite3_clear_bindings(statement_);
  bindFailure_ = SQLITE_OK;
}

std::string_view Statement::bytes(int column) {
  const void* start = library().sqlite3_column_blob(statement_, column);
  const auto size = static_cast<std::size_t>(library().sqlite3_column_bytes(statement_, column));
  return {static_cast<const char*>(start), start ? size : 0};
}

int Connection::open(const std::string& name, int flags) {
  close();
  try {
    const int result = library().sqlite3_open_v2(name.c_str(), &connection_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK) {
      openFailure_ = connection_ ? words(connection_) : library().sqlite3_errstr(result);
      close();
    }
    return result;
  } catch (const NSException& notLoaded) {
    openFailure_ = notLoaded.reason().str();
    return SQLITE_ERROR;
  }
}

void Connection::close() noexcept {
  if (connection_) library().sqlite3_close(std::exchange(connection_, nullptr));
}

void Connection::closeQuickly() noexcept {
  if (connection_) library().sqlite3_db_config(connection_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  close();
}

Statement Connection::prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  library().sqlite3_prepare_v3(connection_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
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
