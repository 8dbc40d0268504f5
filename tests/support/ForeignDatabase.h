// tests/support/ForeignDatabase.h - a connection to a database that does not use the library.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

namespace norvik::test {

class ForeignDatabase {
 public:
  explicit ForeignDatabase(const std::string& path) { EXPECT_EQ(sqlite3_open(path.c_str(), &database_), SQLITE_OK); }
  ForeignDatabase(const ForeignDatabase&) = delete;
  ForeignDatabase& operator=(const ForeignDatabase&) = delete;
  ~ForeignDatabase() { sqlite3_close(database_); }

  /// The columns of all rows, one after the other.
  std::string run(const char* sql) {
    std::string result;
    char* error = nullptr;
    const auto keep = [](void* text, int count, char** columns, char**) {
      for (int i = 0; i < count; ++i) *static_cast<std::string*>(text) += columns[i] ? columns[i] : "NULL";
      return 0;
    };
    EXPECT_EQ(sqlite3_exec(database_, sql, keep, &result, &error), SQLITE_OK) << sql << ": " << (error ? error : "");
    sqlite3_free(error);
    return result;
  }

 private:
  sqlite3* database_ = nullptr;
};

}  // namespace norvik::test
