#include "NorvikCore/platform/foundation/internal/DatabaseFile.h"

#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/kernel/Directory.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/SystemError.h"
#include "NorvikCore/platform/kernel/internal/OwnFile.h"

#include <errno.h>
#include <time.h>

#include <array>
#include <string_view>
#include <tuple>
#include <utility>

namespace norvik::detail {
namespace {

using kernel::FileKind;
using kernel::FileStatus;
using kernel::Links;

constexpr int usualPatience = 1000, shortPatience = usualPatience / 20;  // milliseconds
constexpr int endPatience = 2000;                                        // milliseconds, for all files together
constexpr unsigned ownerReadsAndWrites = 0600, othersRights = 0077;
constexpr std::string_view writeAhead = "wal";
constexpr std::array sideFiles = {"-wal", "-shm", "-journal"};

void sleepMilliseconds(int milliseconds) {
  const timespec time{0, milliseconds * 1'000'000L};
  nanosleep(&time, nullptr);
}

/// A user who may create names in the folder could give any file of this user a second name there, so that it would be
/// written to.
bool mayBeAnothersName(const FileStatus& status, bool isShared) { return isShared && status.links > 1; }

std::string kindName(FileKind kind) {
  switch (kind) {
    case FileKind::directory:
      return "a folder";
    case FileKind::symbolicLink:
      return "a link";
    case FileKind::characterDevice:
    case FileKind::blockDevice:
      return "a device";
    case FileKind::pipe:
      return "a named pipe";
    case FileKind::socket:
      return "a socket";
    default:
      return "something else";
  }
}

/// A URI with which SQLite opens a file without locks, as a file that does not change.
std::string frozenAddress(const std::string& path) {
  std::string address = "file:";
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      constexpr std::string_view digits = "0123456789ABCDEF";
      address += {'%', digits[static_cast<unsigned char>(c) >> 4], digits[c & 15]};
    } else {
      address += c;
    }
  }
  return address + "?immutable=1";
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool isSame(const FileStatus& a, const FileStatus& b) {
  return a.device == b.device && a.inode == b.inode && a.modification == b.modification && a.size == b.size &&
         a.permissions == b.permissions;
}

}  // namespace

/// The list of all database files of the process, for forks and the end of the process.
class DatabaseFiles {
 public:
  static DatabaseFiles& shared() {
    return kernel::madeOnce([] { return new DatabaseFiles; });
  }

  void add(DatabaseFile& file) {
    const MutexLock lock(mutex_);
    file.next_ = first_;
    if (first_ != nullptr) first_->previous_ = &file;
    first_ = &file;
  }

  void remove(DatabaseFile& file) {
    const MutexLock lock(mutex_);
    (file.previous_ != nullptr ? file.previous_->next_ : first_) = file.next_;
    if (file.next_ != nullptr) file.next_->previous_ = file.previous_;
  }

 private:
  DatabaseFiles() {
    kernel::atForkAlone(&beforeFork, nullptr, nullptr);
    atLastProcessEnd(&closeAll);
  }

  // No other thread is using a file, because it would hold the file's mutex.
  static void beforeFork() NK_NO_THREAD_SAFETY_ANALYSIS {
    for (DatabaseFile* file = shared().first_; file != nullptr; file = file->next_) {
      const int patience = file->patience_;
      file->setPatience(0);
      if (file->owner_ != nullptr) file->owner_->beforeFork();
      file->setPatience(patience);
      file->abandon();
    }
  }

  // Other threads may still be running. The wait for them is bounded, because the thread that ends the process may hold
  // a mutex itself, if a signal handler calls exit().
  static void closeAll() NK_NO_THREAD_SAFETY_ANALYSIS {
    int patience = endPatience;
    if (!lockWithin(patience, shared().mutex_)) return;
    for (DatabaseFile* file = shared().first_; file != nullptr; file = file->next_) {
      if (!lockWithin(patience, file->mutex_)) continue;
      file->setPatience(usualPatience);
      if (file->owner_ != nullptr) file->owner_->beforeEnd();
      file->close();
      file->mutex_.unlock();
    }
    shared().mutex_.unlock();
  }

  static bool lockWithin(int& milliseconds, Mutex& mutex) NK_NO_THREAD_SAFETY_ANALYSIS {
    while (!mutex.try_lock()) {
      if (milliseconds-- <= 0) return false;
      sleepMilliseconds(1);
    }
    return true;
  }

  Mutex mutex_;
  DatabaseFile* first_ NK_GUARDED_BY(mutex_) = nullptr;
};

struct DatabaseFile::Place {
  kernel::OwnPath found;
  bool hasFullLog = false;
  FileStatus log;
};

DatabaseFile::DatabaseFile(std::string path, const Format& format, Mutex& mutex, Owner* owner)
    : path_(std::move(path)), format_(format), mutex_(mutex), owner_(owner), patience_(usualPatience) {
  sqlite::load();
  DatabaseFiles::shared().add(*this);
}

DatabaseFile::~DatabaseFile() {
  DatabaseFiles::shared().remove(*this);
  close();
}

void DatabaseFile::close() noexcept {
  const QuietWrites quiet;
  statements_.clear();
  connection_.close();
  whyFrozen_.clear();
  isModeSet_ = false;
}

void DatabaseFile::abandon() noexcept {
  const QuietWrites quiet;
  statements_.clear();
  connection_.closeQuickly();
  close();
}

void DatabaseFile::setPatience(int milliseconds) noexcept {
  patience_ = milliseconds;
  if (connection_.isOpen()) connection_.setBusyTimeout(milliseconds);
}

sqlite::Statement& DatabaseFile::statement(const char* sql) {
  sqlite::Statement& kept = statements_[sql];
  if (!kept) kept = connection_.prepare(sql);
  return kept;
}

bool DatabaseFile::isStillTheFile(const FileStatus& status) const {
  if (!isFrozen()) return status.device == opened_.device && status.inode == opened_.inode;
  FileStatus log;
  const int error = kernel::readFileStatus(openPath_ + "-wal", log, Links::stay);
  return isSame(status, opened_) && isSame(error == 0 ? log : FileStatus(), openedLog_);
}

DatabaseFile::Presence DatabaseFile::open(std::string& failure) {
  const QuietWrites quiet;
  FileStatus status;
  const int error = kernel::readFileStatus(path_, status);
  if (connection_.isOpen()) {
    if (error == 0 && isStillTheFile(status)) return Presence::Open;
    close();
  }
  if (error == ENOENT || error == ENOTDIR) return Presence::Missing;
  Place place;
  if (!findPlace(place, failure)) return Presence::Failed;
  return place.found.exists ? openAt(place, failure) : Presence::Missing;
}

bool DatabaseFile::findPlace(Place& place, std::string& failure) const {
  // The system would end the path at a zero byte.
  const bool hasZero = path_.find('\0') != path_.npos;
  const int error = hasZero ? EINVAL : kernel::resolveOwnPath(path_, place.found);
  if (error == EPERM && !place.found.foreign.empty()) {
    failure = place.found.foreign + " belongs to another user";
    return false;
  }
  if (error != 0) {
    failure = kernel::errorText(error);
    return false;
  }
  if (!place.found.exists) return true;
  if (place.found.status.kind != FileKind::regular) {
    failure = kindName(place.found.status.kind) + " is in its place";
    return false;
  }
  if (mayBeAnothersName(place.found.status, place.found.isShared)) {
    failure = "another name of a file is in its place";
    return false;
  }
  if (!areSideFilesTrusted(place, failure)) return false;
  const bool isThere = kernel::readFileStatus(place.found.path + "-wal", place.log, Links::stay) == 0;
  if (!isThere) place.log = {};
  place.hasFullLog = place.log.size > 0;
  return true;
}

bool DatabaseFile::areSideFilesTrusted(const Place& place, std::string& failure) const {
  for (const char* side : sideFiles) {
    const std::string path = place.found.path + side;
    FileStatus status;
    if (const int error = kernel::readFileStatus(path, status, Links::stay)) {
      if (error == ENOENT) continue;
      failure = path + " cannot be read: " + kernel::errorText(error);
      return false;
    }
    if (!kernel::isTrusted(status, place.found.isShared)) {
      failure = path + " belongs to another user";
      return false;
    }
    if (status.kind != FileKind::regular) {
      failure = kindName(status.kind) + " is in the place of " + path;
      return false;
    }
    if (mayBeAnothersName(status, place.found.isShared)) {
      failure = "another name of a file is in the place of " + path;
      return false;
    }
  }
  return true;
}

/// SQLite creates side files with the permissions that the database has at that moment. Permissions of files of other
/// users are not changed.
void DatabaseFile::mendPermissions(const Place& place) const {
  const unsigned permissions = place.found.status.permissions;
  if ((permissions & othersRights) != 0) {
    std::ignore = kernel::setPermissionsOfFile(place.found.path, permissions & ~othersRights);
  }
  for (const char* side : sideFiles) {
    const std::string path = place.found.path + side;
    FileStatus status;
    if (kernel::readFileStatus(path, status, Links::stay) == 0 && status.permissions != ownerReadsAndWrites) {
      std::ignore = kernel::setPermissionsOfFile(path, ownerReadsAndWrites);
    }
  }
}

DatabaseFile::Presence DatabaseFile::openAt(const Place& place, std::string& failure) {
  const std::string& path = place.found.path;
  openPath_ = path;
  opened_ = place.found.status;
  openedLog_ = place.log;
  std::string why;
  if (const int error = kernel::mayWrite(path)) why = kernel::errorText(error);
  int result = SQLITE_CANTOPEN;
  if (why.empty()) {
    // Makes side files writable that were created while the database could not be written.
    for (const char* side : sideFiles) {
      FileStatus status;
      if (kernel::readFileStatus(path + side, status, Links::stay) == 0 &&
          (status.permissions & ownerReadsAndWrites) != ownerReadsAndWrites) {
        std::ignore = kernel::setPermissionsOfFile(path + side, ownerReadsAndWrites);
      }
    }
    result = openConnection(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW, why);
  } else if (place.hasFullLog) {
    std::string ignored;
    result = openConnection(path, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOFOLLOW, ignored);
    if (result == SQLITE_OK) whyFrozen_ = why;
  }
  if (result == SQLITE_CANTOPEN || result == SQLITE_READONLY) {
    // Without locks and side files, because they could not be created, or would be created unwritable.
    constexpr int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOFOLLOW;
    result = openConnection(frozenAddress(path), flags, failure);
    if (result == SQLITE_OK) whyFrozen_ = why;
  } else {
    failure = why;
  }
  if (result != SQLITE_OK) return Presence::Failed;
  switch (recognize(failure)) {
    case Content::Ours:
      break;
    case Content::Empty:
      abandon();
      return Presence::Missing;
    default:
      abandon();
      return Presence::Failed;
  }
  if (!isFrozen()) {
    mendPermissions(place);
    // Checked after they were opened, so that a file that another user created at the last moment is noticed.
    if (place.found.isShared && !areSideFilesTrusted(place, failure)) {
      abandon();
      return Presence::Failed;
    }
    std::string mode;
    isModeSet_ = connection_.readText("PRAGMA journal_mode", mode) && mode == writeAhead;
    if (isModeSet_) {
      connection_.run("PRAGMA synchronous = NORMAL");
      connection_.run("PRAGMA wal_autocheckpoint = " + std::to_string(format_.logPages));
    }
  }
  ++openings_;
  return Presence::Open;
}

/// If the database cannot be read, the connection is closed again.
int DatabaseFile::openConnection(const std::string& name, int flags, std::string& failure) {
  int result = connection_.open(name, flags) & 0xFF;
  if (result == SQLITE_OK) {
    connection_.setBusyTimeout(patience_);
    connection_.run("PRAGMA trusted_schema = OFF");
    sqlite3_int64 version = 0;
    if (!connection_.readInteger("PRAGMA user_version", version)) result = connection_.failureCode();
  }
  if (result != SQLITE_OK) {
    failure = connection_.whatFailed();
    abandon();
  }
  return result;
}

/// In one transaction (the caller's, if there is one), because another process may be creating the tables.
DatabaseFile::Content DatabaseFile::recognize(std::string& failure) {
  const bool isInner = connection_.isInTransaction();
  sqlite3_int64 version = 0, application = 0, tables = 0;
  const bool isRead = (isInner || connection_.run("BEGIN") == SQLITE_OK) &&
                      connection_.readInteger("SELECT count(*) FROM sqlite_schema", tables) &&
                      connection_.readInteger("PRAGMA user_version", version) &&
                      connection_.readInteger("PRAGMA application_id", application);
  if (!isRead) failure = connection_.whatFailed();
  const bool isSampled = isRead && connection_.prepare(format_.sample);
  if (!isInner) connection_.run("ROLLBACK");
  if (!isRead) return Content::Failed;
  if (version == 0 && application == 0 && tables == 0) return Content::Empty;
  const bool isOurs = application == format_.applicationId || (application == 0 && version != 0 && isSampled);
  if (!isOurs) {
    failure = "it is another application's database";
  } else if (version > format_.version) {
    failure = "it was written by a later version";
  } else if (version != format_.version || !isSampled) {
    failure = "it is damaged";
  } else {
    return Content::Ours;
  }
  return Content::Refused;
}

bool DatabaseFile::openForWriting(std::string& failure) {
  if (isFrozen()) close();  // because it may be writable again
  switch (open(failure)) {
    case Presence::Open:
      failure = whyFrozen_;
      return !isFrozen() && useLog(failure);
    case Presence::Missing:
      return create(failure) && useLog(failure);
    default:
      return false;
  }
}

bool DatabaseFile::create(std::string& failure) {
  Place place;
  if (!findPlace(place, failure)) return false;
  std::string failedFolder;
  if (const int error = kernel::createDirectories(folderOf(place.found.path), 0700, &failedFolder)) {
    failure = "the folder " + failedFolder + " cannot be created: " + kernel::errorText(error);
    return false;
  }
  const int error = kernel::makeOwnFile(place.found.path);
  if (error != 0 && error != EEXIST) {
    failure = "the file cannot be created: " + kernel::errorText(error);
    return false;
  }
  // Another user may have created a folder or the file in the meantime.
  if (!findPlace(place, failure)) return false;
  if (!place.found.exists) {
    failure = "it was removed while it was created";
    return false;
  }
  if (place.found.status.permissions != ownerReadsAndWrites) {
    std::ignore = kernel::setPermissionsOfFile(place.found.path, ownerReadsAndWrites);
  }
  if (openConnection(place.found.path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW, failure) != SQLITE_OK)
    return false;
  if (format_.canShrink) connection_.run("PRAGMA auto_vacuum = INCREMENTAL");
  bool isDone = connection_.run("BEGIN IMMEDIATE") == SQLITE_OK;
  if (isDone) {
    switch (recognize(failure)) {
      case Content::Ours:
        break;
      case Content::Empty:
        isDone = connection_.runAll(format_.schema) == SQLITE_OK &&
                 connection_.run("PRAGMA application_id = " + std::to_string(format_.applicationId)) == SQLITE_OK &&
                 connection_.run("PRAGMA user_version = " + std::to_string(format_.version)) == SQLITE_OK;
        break;
      default:
        abandon();
        return false;
    }
    isDone = isDone && connection_.run("COMMIT") == SQLITE_OK;
  }
  if (!isDone) {
    failure = connection_.whatFailed();
    if (connection_.failureCode() == SQLITE_BUSY && patience_ == usualPatience) patience_ = shortPatience;
  }
  abandon();
  return isDone && open(failure) == Presence::Open && !isFrozen();
}

/// Sets write-ahead mode. A process that was killed while it created the file, or a lock, may have left the file in the
/// other mode. That mode is only slower, so a lock is not a failure.
bool DatabaseFile::useLog(std::string& failure) {
  if (isModeSet_) return true;
  std::string mode;
  // SQLite does not wait by itself if several processes change the mode at once.
  for (int waited = 0; !connection_.readText("PRAGMA journal_mode = WAL", mode); waited += 10) {
    if (connection_.failureCode() != SQLITE_BUSY) {
      failure = connection_.whatFailed();
      abandon();
      return false;
    }
    if (waited >= patience_) return true;
    sleepMilliseconds(10);
  }
  isModeSet_ = true;
  if (mode != writeAhead) return true;
  abandon();
  return open(failure) == Presence::Open && !isFrozen();
}

bool DatabaseFile::begin(std::string& failure) {
  if (!openForWriting(failure)) return false;
  if (statement("BEGIN IMMEDIATE").run() == SQLITE_OK) return true;
  return end(false, failure);
}

bool DatabaseFile::end(bool isDone, std::string& failure) {
  if (isDone && statement("COMMIT").run() == SQLITE_OK) {
    if (patience_ == shortPatience) setPatience(usualPatience);
    return true;
  }
  failure = connection_.whatFailed();
  const int code = connection_.failureCode();
  if (connection_.isInTransaction()) statement("ROLLBACK").run();
  if (code == SQLITE_BUSY) {
    if (patience_ == usualPatience) setPatience(shortPatience);
  } else if (code != SQLITE_FULL) {
    abandon();  // the next operation opens the file again, which may be another one by then
  }
  return false;
}

}  // namespace norvik::detail
