// NorvikCore/platform/foundation/internal/SQLiteLibrary.h - the functions of SQLite, loaded on first use.
//
//   const sqlite::Library& library = sqlite::library();
//   library.sqlite3_step(statement);
//
// A program without preferences, cookies and logs in SQLite databases starts without SQLite. That takes a tenth off the
// start.
//
// Threads: synchronised.
#pragma once

#include <sqlite3.h>

namespace norvik::detail::sqlite {

#define NK_SQLITE_FUNCTIONS(function)                                                                                  \
  function(sqlite3_bind_blob64) function(sqlite3_bind_double) function(sqlite3_bind_int64)                             \
      function(sqlite3_bind_text64) function(sqlite3_busy_timeout) function(sqlite3_changes64)                         \
          function(sqlite3_clear_bindings) function(sqlite3_close) function(sqlite3_column_blob)                       \
              function(sqlite3_column_bytes) function(sqlite3_column_int64) function(sqlite3_column_type)              \
                  function(sqlite3_db_config) function(sqlite3_errmsg) function(sqlite3_errstr) function(sqlite3_exec) \
                      function(sqlite3_extended_errcode) function(sqlite3_finalize) function(sqlite3_get_autocommit)   \
                          function(sqlite3_libversion) function(sqlite3_open_v2) function(sqlite3_prepare_v3)          \
                              function(sqlite3_reset) function(sqlite3_step) function(sqlite3_system_errno)

struct Library {
#define NK_SQLITE_MEMBER(name) decltype(&::name) name;
  NK_SQLITE_FUNCTIONS(NK_SQLITE_MEMBER)
#undef NK_SQLITE_MEMBER
};

/// Raises NSGenericException if SQLite cannot be loaded; the next call tries again.
[[nodiscard]] const Library& library();

/// Loads SQLite if it is not loaded yet. An owner of a database calls this before it takes a lock: a thread that loads
/// a shared object holds the loader's lock, and may wait for the owner's lock in an initialiser of that object. If
/// SQLite cannot be loaded, opening the database reports that.
void load() noexcept;

}  // namespace norvik::detail::sqlite
