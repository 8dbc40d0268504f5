#include "NorvikCore/platform/foundation/internal/PreferenceFile.h"

#include "NorvikCore/platform/kernel/Directory.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/SystemError.h"

#include <errno.h>
#include <time.h>

#include <tuple>
#include <utility>

namespace norvik::detail {
namespace {

constexpr int busyMilliseconds = 1000;
constexpr sqlite3_int64 formatVersion = 1;
constexpr sqlite3_int64 missingFile = -1;

/// The key as the database has it, and whether it is TEXT.
std::pair<std::string, bool> storedKey(const NSString& key) {
  if (key.isWellFormed()) return {key.str(), true};
  std::string bytes;
  for (const char16_t unit : key.toUtf16()) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return {bytes, false};
}

NSString keyFromUnits(std::string_view bytes) {
  std::u16string units;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto low = static_cast<unsigned char>(bytes[i]), high = static_cast<unsigned char>(bytes[i + 1]);
    units += static_cast<char16_t>(low | high << 8);
  }
  return NSString::fromUtf16(units);
}

/// An address by which SQLite opens a file that nobody writes, without locks.
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

/// Signals of writes that fail are for nobody: the library says by itself what failed.
class QuietWrites {
 public:
  ~QuietWrites() { guard_.failed(EFBIG); }

 private:
  kernel::WriteSignalGuard guard_;
};

}  // namespace

PreferenceFile::Outcome PreferenceFile::readIfChanged(std::vector<Row>& rows, std::string& failure) {
  const QuietWrites quiet;
  rows.clear();
  switch (open(failure)) {
    case Presence::Unwritable:
    case Presence::Failed:
      return Outcome::Failed;
    case Presence::Missing:
      return std::exchange(version_, missingFile) == missingFile ? Outcome::Same : Outcome::Changed;
    case Presence::Open:
      break;
  }
  const bool isKnown = statements_.dataVersion.step() == SQLITE_ROW;
  const sqlite3_int64 version = isKnown ? statements_.dataVersion.integer(0) : 0;
  statements_.dataVersion.reset();
  if (isKnown && version_ == version) return Outcome::Same;
  if (!isKnown || !readRows(rows)) {
    failure = connection_.whatFailed();
    close();
    return Outcome::Failed;
  }
  version_ = version;
  return Outcome::Changed;
}

bool PreferenceFile::write(const Changes& changes, std::string& failure) {
  const QuietWrites quiet;
  if (!openForWriting(failure)) return false;
  if (writeRows(changes)) return true;
  failure = connection_.whatFailed();
  const bool isWhole = connection_.failureCode() == SQLITE_FULL || connection_.failureCode() == SQLITE_BUSY;
  statements_.rollback.run();
  if (!isWhole) close();  // what stands there next time may be another file
  return false;
}

bool PreferenceFile::writeRows(const Changes& changes) {
  if (statements_.begin.run() != SQLITE_OK) return false;
  for (const auto& [key, value] : changes) {
    const auto [stored, isText] = storedKey(key);
    sqlite::Statement& statement = value ? statements_.put : statements_.remove;
    if (isText) {
      statement.bindText(1, stored);
    } else {
      statement.bindBlob(1, stored);
    }
    if (value) statement.bindBlob(2, *value);
    if (statement.run() != SQLITE_OK) return false;
  }
  return statements_.commit.run() == SQLITE_OK;
}

bool PreferenceFile::readRows(std::vector<Row>& rows) {
  int result = SQLITE_DONE;
  while ((result = statements_.select.step()) == SQLITE_ROW) {
    const bool isText = statements_.select.type(0) == SQLITE_TEXT;
    const std::string_view key = statements_.select.bytes(0);
    rows.push_back({isText ? NSString(key) : keyFromUnits(key), std::string(statements_.select.bytes(1))});
  }
  statements_.select.reset();
  return result == SQLITE_DONE;
}

void PreferenceFile::close() noexcept {
  statements_ = {};
  connection_.close();
  whyFrozen_.clear();
  version_.reset();
}

void PreferenceFile::closeQuickly() noexcept {
  statements_ = {};
  connection_.closeQuickly();
  close();
}

bool PreferenceFile::isStillTheFile(const kernel::FileStatus& status) const noexcept {
  const bool isSame = status.device == opened_.device && status.inode == opened_.inode;
  const bool isUntouched = status.modification == opened_.modification && status.size == opened_.size;
  return isSame && (whyFrozen_.empty() || isUntouched);
}

PreferenceFile::Presence PreferenceFile::open(std::string& failure) {
  kernel::FileStatus status;
  const int error = kernel::readFileStatus(path_, status);
  if (connection_.isOpen()) {
    if (error == 0 && isStillTheFile(status)) return Presence::Open;
    close();
  }
  if (error == ENOENT || error == ENOTDIR) return Presence::Missing;
  if (error != 0) {
    failure = kernel::errorText(error);
    return Presence::Failed;
  }
  opened_ = status;
  const Presence presence = openFile(path_, SQLITE_OPEN_READWRITE, failure);
  if (presence != Presence::Unwritable) return presence;
  std::string failureAgain;
  const Presence frozen = openFile(frozenAddress(path_), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, failureAgain);
  if (frozen == Presence::Open) whyFrozen_ = failure;
  return frozen == Presence::Unwritable ? Presence::Failed : frozen;
}

PreferenceFile::Presence PreferenceFile::openFile(const std::string& name, int flags, std::string& failure) {
  int result = connection_.open(name, flags) & 0xFF;
  sqlite3_int64 version = 0, tables = 0;
  if (result == SQLITE_OK) {
    connection_.setBusyTimeout(busyMilliseconds);
    connection_.run("PRAGMA synchronous = NORMAL");
    connection_.run("PRAGMA trusted_schema = OFF");
    if (!connection_.readInteger("PRAGMA user_version", version) ||
        !connection_.readInteger("SELECT count(*) FROM sqlite_schema", tables)) {
      result = connection_.failureCode();
    }
  }
  if (result != SQLITE_OK) {
    failure = connection_.whatFailed();
    close();
    return result == SQLITE_CANTOPEN || result == SQLITE_READONLY ? Presence::Unwritable : Presence::Failed;
  }
  if (version == formatVersion) {
    prepareStatements();
    return Presence::Open;
  }
  close();
  if (version == 0 && tables == 0) return Presence::Missing;
  failure = version > formatVersion ? "it was written by a later version" : "it is a database of something else";
  return Presence::Failed;
}

void PreferenceFile::prepareStatements() {
  statements_.dataVersion = connection_.prepare("PRAGMA data_version");
  statements_.select = connection_.prepare("SELECT key, value FROM preference");
  statements_.begin = connection_.prepare("BEGIN IMMEDIATE");
  statements_.put = connection_.prepare("INSERT OR REPLACE INTO preference(key, value) VALUES(?, ?)");
  statements_.remove = connection_.prepare("DELETE FROM preference WHERE key = ?");
  statements_.commit = connection_.prepare("COMMIT");
  statements_.rollback = connection_.prepare("ROLLBACK");
}

bool PreferenceFile::openForWriting(std::string& failure) {
  if (!whyFrozen_.empty()) close();  // perhaps it can be written again
  switch (open(failure)) {
    case Presence::Open:
      failure = whyFrozen_;
      return failure.empty();
    case Presence::Missing:
      return create(failure);
    default:
      return false;
  }
}

bool PreferenceFile::create(std::string& failure) {
  std::string failedFolder;
  if (const int error = kernel::createDirectories(path_.substr(0, path_.rfind('/')), 0700, &failedFolder)) {
    failure = "the folder " + failedFolder + " cannot be made: " + kernel::errorText(error);
    return false;
  }
  const int result = connection_.open(path_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  // Before anything is in it; a file system without permissions has none to set.
  if (result == SQLITE_OK) std::ignore = kernel::setPermissions(path_, 0600);
  if (result != SQLITE_OK || !makeTable()) {
    failure = connection_.whatFailed();
    close();
    return false;
  }
  close();
  return open(failure) == Presence::Open;
}

bool PreferenceFile::makeTable() {
  connection_.setBusyTimeout(busyMilliseconds);
  // SQLite does not wait by itself where several processes change the mode at once.
  for (int i = 0; connection_.run("PRAGMA journal_mode = WAL") != SQLITE_OK; ++i) {
    if (connection_.failureCode() != SQLITE_BUSY || i == busyMilliseconds / 10) return false;
    constexpr timespec tenMilliseconds{0, 10'000'000};
    nanosleep(&tenMilliseconds, nullptr);
  }
  sqlite3_int64 version = 0;
  return connection_.run("BEGIN IMMEDIATE") == SQLITE_OK && connection_.readInteger("PRAGMA user_version", version) &&
         (version == formatVersion ||
          (connection_.run("CREATE TABLE preference(key PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID") ==
               SQLITE_OK &&
           connection_.run("PRAGMA user_version = 1") == SQLITE_OK)) &&
         connection_.run("COMMIT") == SQLITE_OK;
}

}  // namespace norvik::detail
