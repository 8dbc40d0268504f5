// programs/norvik-log/SqliteSource.h - the log that DDSQLiteLogger writes. It is only read, and other processes may
// write to it at the same time.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "DatabaseEntry.h"
#include "FileSource.h"

namespace norvik_log {

/// True if the file begins like an SQLite database.
[[nodiscard]] bool isSqliteFile(const std::string& path);

class SqliteSource : public DatabaseSource {
 public:
  /// A file that cannot be opened is reported and has no messages. The path must outlive the records.
  SqliteSource(const std::string& path, const Reading& reading);
  ~SqliteSource() override;

  bool next(Batch& batch) override;
  void lookAgain() override;

 private:
  struct Database;

  /// Identifies an entry. The number alone does not, because the number of a deleted entry may be used again.
  struct Row {
    std::int64_t number = 0;
    double time = 0;
    bool operator==(const Row&) const = default;
  };
  /// Identifies a file independently of its name.
  struct Place {
    std::uint64_t device = 0, inode = 0;
    bool operator==(const Place&) const = default;
  };

  void open();
  void prepare();
  void fail();
  [[nodiscard]] std::optional<Place> placeNow() const;
  /// True if another process uses the database.
  [[nodiscard]] bool isUsed() const;
  /// Finds the first row of a statement, if it has one. Returns false if the statement failed.
  [[nodiscard]] bool find(const char* statement, std::int64_t number, std::optional<Row>& found) const;
  [[nodiscard]] bool noticeNewNumbers();
  [[nodiscard]] bool isByTime() const noexcept { return reading_.filter.since || reading_.filter.until; }

  const std::string& path_;
  const Reading& reading_;
  FilterCheck check_;
  std::unique_ptr<Database> database_;
  bool isImmutable_ = false;  // opened as a database that no process writes to
  std::chrono::steady_clock::time_point lastOpening_;
  std::optional<Place> place_;
  Row last_;                  // all entries up to this one were read; the one with the highest number
  Row highest_;               // the entry with the highest number that this reading has seen
  std::optional<Row> shown_;  // the last entry of a reading by time that has not reached its end
  std::optional<Row> first_;  // the first entry of the table when the reading began
};

}  // namespace norvik_log
