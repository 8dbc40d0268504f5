// NorvikCore/platform/foundation/internal/DatabaseFile.h - a database file of this user's: where it is, who may read
// it, how long its owner waits for others, and what becomes of it when the process forks and when it ends.
//
//   constexpr DatabaseFile::Format format = {.applicationId = 0x4E6B436B, .version = 1,
//                                            .schema = "CREATE TABLE cookie(name TEXT, value TEXT)",
//                                            .sample = "SELECT name, value FROM cookie"};
//   Mutex mutex;
//   DatabaseFile file(path, format, mutex);
//   const MutexLock lock(mutex);
//   const bool isWritten = file.change(failure, [&] {
//     Statement& put = file.statement("INSERT INTO cookie VALUES(?, ?)");
//     put.bindText(1, name);
//     put.bindText(2, value);
//     return put.run() == SQLITE_OK;
//   });
//
// Permissions: the file, its side files (-wal, -shm, -journal) and the folders that are made are this user's only, from
//              their first moment on; a database that was found readable by others is so no longer. Of what others
//              could have put there (see kernel/internal/OwnFile.h) and of what is no regular file nothing is opened.
// Recognition: a database of another kind, of a later version or a damaged one is left as it is. A new one is checked
//              and made in one transaction, so that several processes may begin at once.
// Writing:     in SQLite's write-ahead mode: what was committed survives the end of the process, however it ends, and a
//              reader waits for no writer. Where nothing can be written, the file is read as it stands.
// Locks:       an operation waits a second for another process. After one that failed, the next ones wait a twentieth
//              of that, until one succeeds.
// Signals:     none comes of a write that fails: see QuietWrites.
// Forks:       the connection is closed before each fork, since SQLite's locks belong to the process, and opened again
//              on both sides when it is next needed.
// The end:     the connection is closed after everything else (see ProcessEnd.h), so that the database is one file
//              again; in a child made by fork() too, if it ends by exit().
//
// Confined to the thread that holds the mutex. An operation that fails closes what may be wrong; the next one begins
// anew.
#pragma once

#include "NorvikCore/platform/foundation/internal/SQLite.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <errno.h>

#include <cstdint>
#include <map>
#include <string>

namespace norvik::detail {

/// While one lives, writes that fail send this thread no signal.
class QuietWrites {
 public:
  ~QuietWrites() { guard_.failed(EFBIG); }

 private:
  kernel::WriteSignalGuard guard_;
};

class DatabaseFile {
 public:
  struct Format {
    std::int32_t
        applicationId;       ///< tells its databases from others; one without an id counts too, if it has the tables
    std::int32_t version;    ///< from 1 on
    const char* schema;      ///< the statements that make the tables
    const char* sample;      ///< a statement that can be prepared where the tables are there
    bool canShrink = false;  ///< the file is made so that "PRAGMA incremental_vacuum" can make it smaller
    int logPages = 1000;     ///< of SQLite's log; then it is brought into the database, which waits for the disk
  };

  /// What an owner wants to do when the process forks or ends.
  class Owner {
   public:
    /// The last use of the file before the fork, which does not wait for other processes. No thread holds a lock of the
    /// library; this one does not hold the mutex.
    virtual void beforeFork() noexcept {}
    /// The last use of the file, with its mutex held.
    virtual void beforeEnd() noexcept {}

   protected:
    ~Owner() = default;
  };

  enum class Presence { Open, Missing, Failed };

  /// The mutex guards this file and no other, and outlives it, as does `owner`, if there is one.
  DatabaseFile(std::string path, const Format& format, Mutex& mutex, Owner* owner = nullptr);
  DatabaseFile(const DatabaseFile&) = delete;
  DatabaseFile& operator=(const DatabaseFile&) = delete;
  /// Without the mutex, which the end of the process may hold.
  ~DatabaseFile();

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Opens the file, unless it is open and still the one that the path leads to; makes nothing.
  [[nodiscard]] Presence open(std::string& failure);
  /// Counts the times that it was opened: what was read before may have changed.
  [[nodiscard]] std::uint64_t openings() const noexcept { return openings_; }
  /// True where it is open for reading only.
  [[nodiscard]] bool isFrozen() const noexcept { return !whyFrozen_.empty(); }

  /// Makes the file where there is none, and runs `change()` in a transaction. It is rolled back unless that gives
  /// true.
  template <class Change>
  [[nodiscard]] bool change(std::string& failure, Change change) {
    const QuietWrites quiet;
    return begin(failure) && end(change(), failure);
  }

  /// Kept for the next time. The literal is the key, and the statement is valid until the file is closed.
  [[nodiscard]] sqlite::Statement& statement(const char* sql);
  [[nodiscard]] const sqlite::Connection& connection() const noexcept { return connection_; }

  /// Brings the log into the database.
  void close() noexcept;
  /// Leaves the log as it is, and the database: a damaged one is not to be changed. Takes a few microseconds.
  void abandon() noexcept;

 private:
  friend class DatabaseFiles;
  enum class Content { Ours, Empty, Refused, Failed };
  struct Place;

  [[nodiscard]] bool findPlace(Place& place, std::string& failure) const;
  [[nodiscard]] bool areSideFilesTrusted(const Place& place, std::string& failure) const;
  void mendPermissions(const Place& place) const;
  [[nodiscard]] Presence openAt(const Place& place, std::string& failure);
  [[nodiscard]] int openConnection(const std::string& name, int flags, std::string& failure);
  [[nodiscard]] Content recognize(std::string& failure);
  [[nodiscard]] bool openForWriting(std::string& failure);
  [[nodiscard]] bool create(std::string& failure);
  [[nodiscard]] bool useLog(std::string& failure);
  [[nodiscard]] bool begin(std::string& failure);
  [[nodiscard]] bool end(bool isDone, std::string& failure);
  [[nodiscard]] bool isStillTheFile(const kernel::FileStatus& status) const;
  void setPatience(int milliseconds) noexcept;

  const std::string path_;
  const Format format_;
  Mutex& mutex_;
  Owner* const owner_;
  sqlite::Connection connection_;
  std::map<const char*, sqlite::Statement> statements_;  ///< gone before the connection is closed
  std::string openPath_;                                 ///< without links
  kernel::FileStatus opened_, openedLog_;                ///< the file that the connection is open on, and its log
  std::string whyFrozen_;
  bool isModeSet_ = false;  ///< it is in write-ahead mode, or cannot be
  int patience_;
  std::uint64_t openings_ = 0;
  DatabaseFile* previous_ = nullptr;  ///< in the list of all
  DatabaseFile* next_ = nullptr;
};

}  // namespace norvik::detail
