#include "SqliteSource.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <tuple>

namespace norvik_log {

bool isSqliteFile(const std::string& path) {
  constexpr std::string_view magic("SQLite format 3\0", 16);
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return false;
  char bytes[magic.size()];
  const ssize_t count = ::pread(descriptor, bytes, sizeof bytes, 0);
  ::close(descriptor);
  return count == static_cast<ssize_t>(magic.size()) && std::string_view(bytes, magic.size()) == magic;
}

struct SqliteSource::Database {
  sqlite3* handle = nullptr;
  sqlite3_stmt* entries = nullptr;
  Database() = default;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database() {
    sqlite3_finalize(entries);
    sqlite3_close(handle);
  }
};

namespace {

/// The path of a file, whatever it begins with. SQLite gives other names, such as ":memory:", a special meaning.
std::string plainPath(const std::string& path) { return path.starts_with('/') ? path : "./" + path; }

/// The address of a database in a folder without write permission that no process uses. SQLite then creates no files
/// beside it.
std::string immutableAddress(const std::string& path) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string address = path.starts_with('/') ? "file://" : "file:";  // after "file:", "//" begins a machine's name
  for (const char c : plainPath(path)) {
    if (c == '%' || c == '?' || c == '#') {
      address += {'%', digits[static_cast<unsigned char>(c) >> 4], digits[c & 15]};
    } else {
      address += c;
    }
  }
  return address + "?immutable=1";
}

}  // namespace

SqliteSource::SqliteSource(const std::string& path, const Reading& reading)
    : path_(path), reading_(reading), check_(reading.filter) {
  open();
}

std::optional<SqliteSource::Place> SqliteSource::placeNow() const {
  struct stat status {};
  if (::stat(path_.c_str(), &status) != 0) return std::nullopt;
  return Place{status.st_dev, status.st_ino};
}

bool SqliteSource::isUsed() const {
  std::error_code unknown;
  return std::filesystem::exists(path_ + "-wal", unknown) || std::filesystem::exists(path_ + "-shm", unknown);
}

void SqliteSource::open() {
  lastOpening_ = std::chrono::steady_clock::now();
  const std::optional<Place> place = placeNow();
  if (place && place != place_) {
    place_ = place;
    last_ = highest_ = {};
    shown_.reset();
    first_.reset();
  }
  database_ = std::make_unique<Database>();
  std::error_code unknown;
  const std::string folder = std::filesystem::absolute(path_, unknown).parent_path().string();
  isImmutable_ = !isUsed() && ::access(folder.c_str(), W_OK) != 0;
  const std::string address = isImmutable_ ? immutableAddress(path_) : plainPath(path_);
  const int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | (isImmutable_ ? SQLITE_OPEN_URI : 0);
  if (sqlite3_open_v2(address.c_str(), &database_->handle, flags, nullptr) != SQLITE_OK) {
    fail();
    return;
  }
  constexpr int patience = 5000;  // the longest wait for a lock of another process
  sqlite3_busy_timeout(database_->handle, patience);
  prepare();
}

SqliteSource::~SqliteSource() = default;

void SqliteSource::fail() {
  const char* const reason = database_->handle ? sqlite3_errmsg(database_->handle) : "out of memory";
  reading_.troubles.report(path_, std::string("cannot be read: ") + reason);
  database_.reset();
}

bool SqliteSource::find(const char* statement, std::int64_t number, std::optional<Row>& found) const {
  sqlite3_stmt* prepared = nullptr;
  int result = sqlite3_prepare_v2(database_->handle, statement, -1, &prepared, nullptr);
  if (result == SQLITE_OK) {
    sqlite3_bind_int64(prepared, 1, number);
    result = sqlite3_step(prepared);
    if (result == SQLITE_ROW) found = Row{sqlite3_column_int64(prepared, 0), sqlite3_column_double(prepared, 1)};
  }
  sqlite3_finalize(prepared);
  return result == SQLITE_ROW || result == SQLITE_DONE;
}

/// Detects that numbers are used again. Numbers begin again after all entries were deleted, and go back after the last
/// entries were deleted. If only old entries were deleted, the numbers of the others stay.
bool SqliteSource::noticeNewNumbers() {
  std::optional<Row> first, last, highest;
  if (!find("SELECT id, time FROM entry ORDER BY id LIMIT 1", 0, first) ||
      !find("SELECT id, time FROM entry WHERE id = ?1", last_.number, last) ||
      !find("SELECT id, time FROM entry ORDER BY id DESC LIMIT 1", 0, highest)) {
    return false;
  }
  if (last_.number > 0 && last != last_) {
    const bool areNew =
        !first || !first_ || first->number < first_->number || (first->number == first_->number && first != first_);
    if (areNew) {
      last_ = {};
    } else if (highest && highest->number < last_.number) {
      last_ = *highest;
    }
    highest_ = last_;
  }
  first_ = first;
  return true;
}

void SqliteSource::prepare() {
  // The transaction makes sure that the compared numbers and the read entries belong to the same moment.
  if (sqlite3_exec(database_->handle, "BEGIN", nullptr, nullptr, nullptr) != SQLITE_OK || !noticeNewNumbers()) {
    return fail();
  }
  // A query by time uses the index on time, and a query without times uses the order of the table, so that nothing is
  // sorted.
  const Filter& filter = reading_.filter;
  const std::string statement =
      std::string("SELECT id, time, level, thread, queue, file, line, text FROM entry WHERE id > ?1") +
      (isByTime() ? " AND time >= ?2 AND time < ?3 ORDER BY time, id" : " ORDER BY id");
  if (sqlite3_prepare_v2(database_->handle, statement.c_str(), -1, &database_->entries, nullptr) != SQLITE_OK) {
    return fail();
  }
  // A millisecond more at each end, because stored times are finer. The filter checks the times again.
  const auto seconds = [](std::int64_t milliseconds, int more) {
    return static_cast<double>(milliseconds + more) / 1000;
  };
  sqlite3_bind_int64(database_->entries, 1, last_.number);
  if (!isByTime()) return;
  sqlite3_bind_double(database_->entries, 2, filter.since ? seconds(*filter.since, -1) : -HUGE_VAL);
  sqlite3_bind_double(database_->entries, 3, filter.until ? seconds(*filter.until, 1) : HUGE_VAL);
}

void SqliteSource::lookAgain() {
  constexpr std::chrono::seconds pause(1);
  if (!database_) {
    if (std::chrono::steady_clock::now() - lastOpening_ >= pause) open();
  } else if (database_->entries == nullptr) {
    // A process may have written to the database since it was opened as immutable.
    isImmutable_ ? open() : prepare();
  }
}

bool SqliteSource::next(Batch& batch) {
  if (!database_ || database_->entries == nullptr) return false;
  sqlite3_stmt* const row = database_->entries;
  const auto textAt = [row](int column) {
    const unsigned char* const text =
        sqlite3_column_text(row, column);  // must be called before the size is read, because it converts to UTF-8
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text), size);
  };
  constexpr std::size_t enough = 256 << 10;
  while (batch.weight() < enough) {
    const int result = sqlite3_step(row);
    if (result != SQLITE_ROW) {
      reportGivenUp(check_.takeGivenUp(), path_, reading_.troubles);
      if (result != SQLITE_DONE) {
        fail();
        return false;
      }
      sqlite3_finalize(database_->entries);
      database_->entries = nullptr;
      sqlite3_exec(database_->handle, "COMMIT", nullptr, nullptr, nullptr);
      last_ = highest_;
      shown_.reset();
      // The name now belongs to another file. The old file has been read to its end.
      if (const std::optional<Place> place = placeNow(); place && place != place_) open();
      return database_ && database_->entries != nullptr;
    }
    const Row here{sqlite3_column_int64(row, 0), sqlite3_column_double(row, 1)};
    if (here.number > highest_.number) highest_ = here;
    if (!isByTime()) {
      last_ = highest_;
    } else if (shown_ && std::tie(here.time, here.number) <= std::tie(shown_->time, shown_->number)) {
      continue;
    } else {
      shown_ = here;
    }
    DatabaseEntry entry;
    entry.time = static_cast<std::int64_t>(
        std::clamp(std::floor(here.time * 1000 + 0.0005), double{earliestTime}, double{latestTime}));
    entry.flag = sqlite3_column_int(row, 2);
    const std::string thread = std::to_string(sqlite3_column_int64(row, 3));
    entry.thread = thread;
    entry.queue = textAt(4);
    entry.file = textAt(5);
    entry.line = sqlite3_column_int(row, 6);
    entry.text = textAt(7);
    addEntry(entry, check_, path_, batch);
  }
  return true;
}

}  // namespace norvik_log
