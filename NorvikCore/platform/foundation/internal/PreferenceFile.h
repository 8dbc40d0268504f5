// The database file that preferences are kept in: a table of keys and their encoded values.
//
//   PRAGMA user_version = 1
//   CREATE TABLE preference(key PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID
//
// A key is TEXT in UTF-8, or where a surrogate half stands alone in it a BLOB of its UTF-16 units, least significant
// byte first. A value is what encodePropertyList() makes of it. The database is in SQLite's write-ahead mode: what was
// committed survives the end of the process, however it ends, and a reader waits for no writer.
//
// A file that is no such database, or damaged, or written by a later version, is left as it is. One that stands where
// nothing can be written is read as it stands. Confined.
#pragma once

#include "NorvikCore/platform/foundation/internal/SQLite.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/values/NSString.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace norvik::detail {

class PreferenceFile {
 public:
  struct Row {
    NSString key;
    std::string value;
  };
  /// New values by their keys; an absent one removes the key.
  using Changes = std::map<NSString, std::optional<std::string>>;

  explicit PreferenceFile(std::string path) : path_(std::move(path)) {}

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  enum class Outcome { Same, Changed, Failed };
  /// All rows, where they may differ from those given the last time: after anybody else has written, and after a
  /// close(). A file that does not exist has no rows, and is not made.
  [[nodiscard]] Outcome readIfChanged(std::vector<Row>& rows, std::string& failure);

  /// All of the changes or none. Makes the file, and the folders above it, for this user only.
  [[nodiscard]] bool write(const Changes& changes, std::string& failure);

  void close() noexcept;
  /// In a few microseconds; the log stays beside the database, for whoever opens it next.
  void closeQuickly() noexcept;

 private:
  enum class Presence { Open, Missing, Unwritable, Failed };

  /// Opens the file, unless it is open and still the one that the path leads to. Never Unwritable: then it is frozen.
  [[nodiscard]] Presence open(std::string& failure);
  [[nodiscard]] Presence openFile(const std::string& name, int flags, std::string& failure);
  [[nodiscard]] bool openForWriting(std::string& failure);
  [[nodiscard]] bool create(std::string& failure);
  [[nodiscard]] bool makeTable();
  [[nodiscard]] bool readRows(std::vector<Row>& rows);
  [[nodiscard]] bool writeRows(const Changes& changes);
  void prepareStatements();
  [[nodiscard]] bool isStillTheFile(const kernel::FileStatus& status) const noexcept;

  const std::string path_;
  sqlite::Connection connection_;
  struct Statements {
    sqlite::Statement dataVersion, select, begin, put, remove, commit, rollback;
  };
  Statements statements_;      ///< gone before the connection is closed
  kernel::FileStatus opened_;  ///< the file that the connection is open on
  std::string whyFrozen_;      ///< not empty where it is open without locks, since nothing can be written there
  std::optional<sqlite3_int64> version_;  ///< of the rows given last; -1 where the file was missing
};

}  // namespace norvik::detail
