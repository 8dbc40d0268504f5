// NorvikCore/postgresql/internal/ServerWriter.h - writes batches of entries to the tables of a server, each entry once.
//
// Tables, which are created if they are missing:
//
//   norvik_log      a row for each entry, with indexes on time and on (level, time)
//   norvik_log_run  a row for each logger of a process: the number of the last batch that was written
//
// A batch is one transaction, which also stores the batch's number. If the connection is lost while the server commits,
// the stored number shows after the next connection whether the batch is there. If the server cannot store an entry of
// a batch (because the database's encoding lacks a character), the batch is written in halves, until only that entry is
// left out.
//
// Confined to one thread at a time.
#pragma once

#include "NorvikCore/logging/database/internal/EntryBuffer.h"
#include "NorvikCore/postgresql/internal/ServerConnection.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace norvik::detail {

class ServerWriter {
 public:
  explicit ServerWriter(std::string parameters);

  /// Writes all entries. On failure, `written` is the number of leading entries that are done, and a later call with
  /// the same entries continues after them. `refused` counts the entries that the server cannot store.
  [[nodiscard]] bool write(const EntryBuffer& entries, std::int64_t deadline, std::size_t& written,
                           std::uint64_t& refused, std::string& failure);
  /// Deletes this machine's entries that are older than `seconds` by the server's clock. `isFinished` is false if there
  /// are more than one call deletes.
  [[nodiscard]] bool deleteOlder(double seconds, std::int64_t deadline, bool& isFinished, std::string& failure);
  void close() noexcept { connection_.close(); }
  /// In a child made by fork().
  void abandon() noexcept { connection_.abandon(); }

 private:
  enum class Outcome : std::uint8_t { written, refused, failed };

  [[nodiscard]] bool open(std::int64_t deadline, ServerFailure& failure);
  [[nodiscard]] bool makeTables(std::int64_t deadline, ServerFailure& failure);
  [[nodiscard]] bool isCommitted(std::int64_t deadline, ServerFailure& failure, bool& answer);
  [[nodiscard]] Outcome writeRows(const std::vector<StoredEntry>& rows, std::size_t from, std::size_t to,
                                  std::int64_t deadline, ServerFailure& failure);
  void encode(const std::vector<StoredEntry>& rows, std::size_t from, std::size_t to);

  ServerConnection connection_;
  const std::string run_;  // identifies this writer on the server
  std::string machine_, program_;
  std::int32_t process_;
  std::uint64_t batch_ = 0;       // the number of the last batch that was begun
  std::size_t uncertainEnd_ = 0;  // the end of the last batch, if it may or may not be written; 0: its state is known
  std::string data_;              // of a COPY; a member so that its memory is reused
};

}  // namespace norvik::detail
