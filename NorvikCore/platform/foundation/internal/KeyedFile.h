// NorvikCore/platform/foundation/internal/KeyedFile.h - a database file of keys and their encoded values.
//
//   CREATE TABLE preference(key PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID
//
// A key is TEXT in UTF-8. If it has a lone surrogate half, it is a BLOB of its UTF-16 units, least significant byte
// first. DatabaseFile describes the rest. Confined to the thread that holds the mutex.
#pragma once

#include "NorvikCore/platform/foundation/internal/DatabaseFile.h"
#include "NorvikCore/platform/values/NSString.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace norvik::detail {

class KeyedFile {
 public:
  /// The statements are literals. They use a table as above, with its own name.
  struct Table {
    DatabaseFile::Format format;
    const char* all;     ///< SELECT key, value
    const char* put;     ///< parameters: the key and the value
    const char* remove;  ///< parameter: the key
  };

  struct Row {
    NSString key;
    std::string value;
  };
  /// New values by their keys; an absent one removes the key.
  using Changes = std::map<NSString, std::optional<std::string>>;

  KeyedFile(std::string path, const Table& table, Mutex& mutex, DatabaseFile::Owner* owner);

  enum class Outcome { Same, Changed, Failed };
  /// All rows, if they may differ from those returned last: after another connection has written, and after a close().
  /// A file that does not exist has no rows and is not created.
  [[nodiscard]] Outcome readIfChanged(std::vector<Row>& rows, std::string& failure);

  /// Writes all changes or none, except those that are too long for a database, which remain in `changes`. If it
  /// returns false, all of them remain. Creates the file, and the folders above it, for this user only.
  [[nodiscard]] bool write(Changes& changes, std::string& failure);

 private:
  [[nodiscard]] bool readRows(std::vector<Row>& rows);
  [[nodiscard]] bool writeRows(const Changes& changes, Changes& tooLong);
  [[nodiscard]] bool isWhole();

  const Table table_;
  DatabaseFile file_;
  bool isDamaged_ = false;  ///< it could not be read; nothing is written until it can be
  std::uint64_t opening_ = 0;
  std::optional<sqlite3_int64> version_;  ///< of the rows returned last; -1 if the file was missing
};

}  // namespace norvik::detail
