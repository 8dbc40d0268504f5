// programs/norvik-log/SqliteSource.h - the log that DDSQLiteLogger keeps, which is only read and may be written to
// meanwhile.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "DatabaseEntry.h"
#include "FileSource.h"

namespace norvik_log {

/// Whether a file begins as an SQLite database does.
[[nodiscard]] bool isSqliteFile(const std::string& path);

class SqliteSource : public DatabaseSource {
 public:
  /// What cannot be opened is reported, and has no messages. The path outlives the records.
  SqliteSource(const std::string& path, const Reading& reading);
  ~SqliteSource() override;

  bool next(Batch& batch) override;
  void lookAgain() override;

 private:
  struct Database;

  /// What identifies an entry: its number may be given again when it was deleted.
  struct Row {
    std::int64_t number = 0;
    double time = 0;
    bool operator==(const Row&) const = default;
  };
  /// Where a file is, whatever its name.
  struct Place {
    std::uint64_t device = 0, inode = 0;
    bool operator==(const Place&) const = default;
  };

  void open();
  void prepare();
  void fail();
  [[nodiscard]] std::optional<Place> placeNow() const;
  /// A process works with it.
  [[nodiscard]] bool isUsed() const;
  /// The first row of a statement, if it has one; false where it failed.
  [[nodiscard]] bool find(const char* statement, std::int64_t number, std::optional<Row>& found) const;
  [[nodiscard]] bool noticeNewNumbers();
  [[nodiscard]] bool isByTime() const noexcept { return reading_.filter.since || reading_.filter.until; }

  const std::string& path_;
  const Reading& reading_;
  FilterCheck check_;
  std::unique_ptr<Database> database_;
  bool isImmutable_ = false;  // opened as what no process works with
  std::chrono::steady_clock::time_point lastOpening_;
  std::optional<Place> place_;
  Row last_;                  // of the entries up to which all are read, that with the highest number
  Row highest_;               // the same of this reading
  std::optional<Row> shown_;  // the last one of a reading by time that did not come to its end
  std::optional<Row> first_;  // of all, when the reading began
};

}  // namespace norvik_log
