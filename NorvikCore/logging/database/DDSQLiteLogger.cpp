#include "NorvikCore/logging/database/DDSQLiteLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/database/internal/EntryBuffer.h"
#include "NorvikCore/logging/database/internal/StoreReports.h"
#include "NorvikCore/platform/foundation/internal/DatabaseFile.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/Paths.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/Date.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <typeinfo>
#include <utility>

namespace norvik {
namespace {

using detail::DatabaseFile;
using detail::EntryBuffer;
using detail::StoredEntry;
using detail::sqlite::Statement;

constexpr DatabaseFile::Format format = {
    .applicationId = 0x4E6B4C67,
    .version = 1,
    .schema =
        "CREATE TABLE entry(id INTEGER PRIMARY KEY, time REAL NOT NULL, level INTEGER NOT NULL, "
        "context INTEGER NOT NULL, thread INTEGER NOT NULL, queue TEXT NOT NULL, file TEXT, function TEXT, "
        "line INTEGER NOT NULL, text TEXT NOT NULL);"
        "CREATE INDEX entry_time ON entry(time);"
        "CREATE INDEX entry_level ON entry(level, time)",
    .sample = "SELECT id, time, level, context, thread, queue, file, function, line, text FROM entry",
    .canShrink = true,
    .logPages = 4000,
};

constexpr std::size_t usualBufferSize = std::size_t{16} << 20;
constexpr std::int64_t deletePatience = 250 * NSEC_PER_MSEC, retryPause = NSEC_PER_SEC;

/// The most entries that a transaction deletes, and the most pages that it frees.
constexpr sqlite3_int64 deletedAtOnce = 2000, freedAtOnce = 1000;

std::string absolutePath(const NSString& path) {
  std::error_code failure;
  const std::string bytes = path.fileSystemRepresentation();
  const std::filesystem::path absolute = std::filesystem::absolute(kernel::expandTilde(bytes), failure);
  return failure ? bytes : absolute.string();
}

void bindName(Statement& statement, int parameter, std::string_view name) {
  if (name.data()) statement.bindText(parameter, name);
}

}  // namespace

/// Confined to the logger's queue. The mutex guards the file, which forks and the end of the process close.
struct DDSQLiteLogger::State {
  explicit State(const std::string& path) : file(path, format, mutex), reports("DDSQLiteLogger", path) {}

  /// Returns false if the database fails. Entries that it refuses are counted in `refused`.
  [[nodiscard]] bool insert(std::uint64_t& refused);
  /// Deletes at most deletedAtOnce entries; returns their number, or -1 on failure.
  [[nodiscard]] sqlite3_int64 deleteSome(double maxAge);
  [[nodiscard]] sqlite3_int64 integer(const char* sql);
  [[nodiscard]] bool free(sqlite3_int64 pages);
  /// True if more than half of the file's pages are free; sets `freePages` to their number.
  [[nodiscard]] bool isMostlyFree(sqlite3_int64& freePages);

  Mutex mutex;
  DatabaseFile file;
  detail::StoreReports reports;
  EntryBuffer buffer{usualBufferSize};
  std::int64_t nextTry = 0;  // the earliest next save after a failure, in monotonic nanoseconds
};

bool DDSQLiteLogger::State::insert(std::uint64_t& refused) {
  Statement& statement = file.statement(
      "INSERT INTO entry(time, level, context, thread, queue, file, function, line, text) "
      "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)");
  return buffer.forEach([&](const StoredEntry& entry) {
    statement.bindReal(1, entry.time);
    statement.bindInteger(2, entry.level);
    statement.bindInteger(3, entry.context);
    statement.bindInteger(4, entry.thread);
    statement.bindText(5, entry.queue);
    bindName(statement, 6, entry.file);
    bindName(statement, 7, entry.function);
    statement.bindInteger(8, entry.line);
    statement.bindText(9, entry.text);
    const int result = statement.run();
    if (result == SQLITE_TOOBIG) ++refused;
    return result == SQLITE_OK || result == SQLITE_TOOBIG;
  });
}

sqlite3_int64 DDSQLiteLogger::State::deleteSome(double maxAge) {
  Statement& statement =
      file.statement("DELETE FROM entry WHERE id IN (SELECT id FROM entry WHERE time < ? ORDER BY time LIMIT ?)");
  statement.bindReal(1, Date::systemDate().timeIntervalSince1970() - maxAge);
  statement.bindInteger(2, deletedAtOnce);
  return statement.run() == SQLITE_OK ? file.connection().changedRows() : -1;
}

sqlite3_int64 DDSQLiteLogger::State::integer(const char* sql) {
  Statement& statement = file.statement(sql);
  const sqlite3_int64 result = statement.step() == SQLITE_ROW ? statement.integer(0) : 0;
  statement.reset();
  return result;
}

bool DDSQLiteLogger::State::isMostlyFree(sqlite3_int64& freePages) {
  freePages = integer("PRAGMA freelist_count");
  return 2 * freePages > integer("PRAGMA page_count");
}

bool DDSQLiteLogger::State::free(sqlite3_int64 pages) {
  Statement& statement = file.statement("PRAGMA incremental_vacuum");  // one page per step
  int result = SQLITE_ROW;
  while (pages-- > 0 && result == SQLITE_ROW) result = statement.step();
  statement.reset();
  return result == SQLITE_ROW || result == SQLITE_DONE;
}

DDSQLiteLogger::DDSQLiteLogger(const NSString& path) : state_(std::make_unique<State>(absolutePath(path))) {}

DDSQLiteLogger::~DDSQLiteLogger() = default;

Ref<DDSQLiteLogger> DDSQLiteLogger::initWithPath(const NSString& path) { return make<DDSQLiteLogger>(path); }

std::optional<NSString> DDSQLiteLogger::loggerName() { return "cocoa.quillmarch.sqliteLogger"; }

NSString DDSQLiteLogger::path() const { return state_->file.path(); }

std::uint64_t DDSQLiteLogger::maximumBufferSize() const {
  return read([this] { return static_cast<std::uint64_t>(state_->buffer.limit()); });
}

void DDSQLiteLogger::setMaximumBufferSize(std::uint64_t bytes) {
  change([this, bytes] { state_->buffer.setLimit(bytes); });
}

std::uint64_t DDSQLiteLogger::lostEntryCount() const {
  return read([this] { return state_->reports.lostCount(); });
}

// Receiving

template <class Entry>
bool DDSQLiteLogger::take(const Entry& entry) {
  const EntryBuffer::Outcome outcome = state_->buffer.add(entry, formatter().get());
  if (outcome == EntryBuffer::Outcome::noRoom) state_->reports.lost();
  if (state_->buffer.isFull() && kernel::monotonicNanoseconds() >= state_->nextTry) savePendingLogEntries();
  return outcome == EntryBuffer::Outcome::taken;
}

bool DDSQLiteLogger::db_log(const DDLogMessage& message) { return take(message); }
bool DDSQLiteLogger::db_logEntry(const DDLogEntry& entry) { return take(entry); }
bool DDSQLiteLogger::takesRuns() const noexcept { return typeid(*this) == typeid(DDSQLiteLogger); }

// Saving and deleting

void DDSQLiteLogger::db_save() { save(false); }

void DDSQLiteLogger::db_saveAndDelete() { save(maxAge() > 0); }

void DDSQLiteLogger::save(bool deletes) {
  State& state = *state_;
  std::string failure;
  std::uint64_t refused = 0;
  sqlite3_int64 deleted = 0, freePages = 0;
  bool deletesMore = false;
  {
    const MutexLock lock(state.mutex);
    const bool isSaved = state.file.change(failure, [&] {
      if (!state.insert(refused)) return false;
      if (deletes) deleted = state.deleteSome(maxAge());
      return deleted >= 0;
    });
    if (!isSaved) {
      state.reports.failed(failure);
      state.nextTry = kernel::monotonicNanoseconds() + retryPause;
      return keepUnsaved();
    }
    deletesMore = deleted == deletedAtOnce || (deleted > 0 && state.isMostlyFree(freePages));
  }
  state.buffer.clear();
  state.nextTry = 0;
  state.reports.worked();
  if (refused > 0) state.reports.refused(refused, "they are too long");
  if (deletesMore) deleteLater();
}

void DDSQLiteLogger::db_delete() {
  State& state = *state_;
  const std::int64_t deadline = kernel::monotonicNanoseconds() + deletePatience;
  const MutexLock lock(state.mutex);
  std::string failure;
  if (state.file.open(failure) == DatabaseFile::Presence::Missing) return;
  sqlite3_int64 deleted = deletedAtOnce;
  const auto change = [&](auto step) {
    const bool isDone = state.file.change(failure, step);
    if (!isDone) state.reports.failedToDelete(failure);
    return isDone;
  };
  while (deleted == deletedAtOnce) {
    if (kernel::monotonicNanoseconds() >= deadline) return deleteLater();
    if (!change([&] { return (deleted = state.deleteSome(maxAge())) >= 0; })) return;
  }
  // Free pages that new entries will need are not given back.
  for (sqlite3_int64 freeBefore = INT64_MAX;;) {
    sqlite3_int64 freePages = 0;
    if (!state.isMostlyFree(freePages) || freePages >= freeBefore) return state.reports.deleted();
    freeBefore = freePages;
    if (kernel::monotonicNanoseconds() >= deadline) return deleteLater();
    if (!change([&] { return state.free(freedAtOnce); })) return;
  }
}

/// Enqueues a deletion behind the waiting messages.
void DDSQLiteLogger::deleteLater() {
  dispatch_async(loggerQueue(), [logger = Weak<DDSQLiteLogger>(this)] {
    if (const Ref<DDSQLiteLogger> alive = logger.lock()) alive->deleteOldLogEntries();
  });
}

void DDSQLiteLogger::willRemoveLogger() {
  DDAbstractDatabaseLogger::willRemoveLogger();
  const MutexLock lock(state_->mutex);
  state_->file.close();
}

void DDSQLiteLogger::db_forget() {
  state_->buffer.clear();
  state_->reports.forget();
  state_->nextTry = 0;
}

}  // namespace norvik
