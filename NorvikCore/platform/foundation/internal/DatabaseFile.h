// NorvikCore/platform/foundation/internal/DatabaseFile.h - a database file of this user: its location, its permissions,
// how long an operation waits for other processes, and its handling when the process forks or ends.
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
// Permissions: the file, its side files (-wal, -shm, -journal) and the folders that are created are readable by this
//              user only, from the moment they are created. If others could read an existing database, they no longer
//              can. Nothing is opened that another user could have put there (see kernel/internal/OwnFile.h) or that is
//              not a regular file.
// Recognition: a database of another kind or of a later version, and a damaged one, is left unchanged. A new one is
//              checked and created in one transaction, so that several processes may start at once.
// Writing:     in SQLite's write-ahead mode: committed changes survive the end of the process, however it ends, and a
//              reader does not wait for a writer. If nothing can be written, the file is opened for reading only.
// Locks:       an operation waits up to a second for another process. After a timeout the next operations wait a
//              twentieth of that, until one succeeds.
// Signals:     a failed write sends no signal: see QuietWrites.
// Forks:       the connection is closed before each fork, because SQLite's locks belong to the process. Each side opens
//              it again when it is next needed.
// The end:     the connection is closed after everything else (see ProcessEnd.h), so that the database is one file
//              again; also in a child made by fork(), if it ends by exit().
//
// Confined to the thread that holds the mutex. An operation that fails closes the connection if it may be faulty; the
// next one opens it again.
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

/// While an object exists, failed writes send this thread no signal.
class QuietWrites {
 public:
  ~QuietWrites() { guard_.failed(EFBIG); }

 private:
  kernel::WriteSignalGuard guard_;
};

class DatabaseFile {
 public:
  struct Format {
    std::int32_t applicationId;  ///< marks databases of this kind; one without an id counts too, if it has the tables
    std::int32_t version;        ///< from 1 on
    const char* schema;          ///< the statements that create the tables
    const char* sample;          ///< a statement that can be prepared if the tables exist
    bool canShrink = false;      ///< the file is created so that "PRAGMA incremental_vacuum" can make it smaller
    int logPages = 1000;  ///< of SQLite's log; at this size it is copied to the database, which waits for the disk
  };

  /// The actions of an owner when the process forks or ends.
  class Owner {
   public:
    /// The last use of the file before the fork. Operations in it do not wait for other processes. No thread holds a
    /// lock of the library, and the calling thread does not hold the mutex.
    virtual void beforeFork() noexcept {}
    /// The last use of the file. The calling thread holds the mutex.
    virtual void beforeEnd() noexcept {}

   protected:
    ~Owner() = default;
  };

  enum class Presence { Open, Missing, Failed };

  /// The mutex must guard this file only. It must outlive the file, and so must `owner`, if given.
  DatabaseFile(std::string path, const Format& format, Mutex& mutex, Owner* owner = nullptr);
  DatabaseFile(const DatabaseFile&) = delete;
  DatabaseFile& operator=(const DatabaseFile&) = delete;
  /// Does not lock the mutex, because the end of the process may hold it.
  ~DatabaseFile();

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Opens the file, unless it is open and the path still leads to it. Creates nothing.
  [[nodiscard]] Presence open(std::string& failure);
  /// The number of times that the file was opened. If it has changed, earlier reads may be out of date.
  [[nodiscard]] std::uint64_t openings() const noexcept { return openings_; }
  /// True if it is open for reading only.
  [[nodiscard]] bool isFrozen() const noexcept { return !whyFrozen_.empty(); }

  /// Creates the file if it does not exist, and runs `change()` in a transaction, which is rolled back unless it
  /// returns true.
  template <class Change>
  [[nodiscard]] bool change(std::string& failure, Change change) {
    const QuietWrites quiet;
    return begin(failure) && end(change(), failure);
  }

  /// Prepared once and kept. The address of the literal is the key; the statement is valid until the file is closed.
  [[nodiscard]] sqlite::Statement& statement(const char* sql);
  [[nodiscard]] const sqlite::Connection& connection() const noexcept { return connection_; }

  /// Closes the connection and copies the log to the database.
  void close() noexcept;
  /// Closes it but leaves the log and the database unchanged, for a database that is damaged. Takes a few microseconds.
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
  std::map<const char*, sqlite::Statement> statements_;  ///< destroyed before the connection is closed
  std::string openPath_;                                 ///< with links resolved
  kernel::FileStatus opened_, openedLog_;                ///< the file that the connection is open on, and its log
  std::string whyFrozen_;
  bool isModeSet_ = false;  ///< it is in write-ahead mode, or that mode is not available
  int patience_;
  std::uint64_t openings_ = 0;
  DatabaseFile* previous_ = nullptr;  ///< in the list of all files
  DatabaseFile* next_ = nullptr;
};

}  // namespace norvik::detail
