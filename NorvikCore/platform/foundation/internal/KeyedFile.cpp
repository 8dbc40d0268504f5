#include "NorvikCore/platform/foundation/internal/KeyedFile.h"

#include <utility>

namespace norvik::detail {
namespace {

constexpr sqlite3_int64 missingFile = -1;

/// The key as it is stored in the database, and whether it is TEXT.
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

}  // namespace

KeyedFile::KeyedFile(std::string path, const Table& table, Mutex& mutex, DatabaseFile::Owner* owner)
    : table_(table), file_(std::move(path), table.format, mutex, owner) {}

KeyedFile::Outcome KeyedFile::readIfChanged(std::vector<Row>& rows, std::string& failure) {
  const QuietWrites quiet;
  rows.clear();
  const DatabaseFile::Presence presence = file_.open(failure);
  if (opening_ != file_.openings()) version_.reset();
  opening_ = file_.openings();
  switch (presence) {
    case DatabaseFile::Presence::Failed:
      return Outcome::Failed;
    case DatabaseFile::Presence::Missing:
      return std::exchange(version_, missingFile) == missingFile ? Outcome::Same : Outcome::Changed;
    case DatabaseFile::Presence::Open:
      break;
  }
  sqlite::Statement& dataVersion = file_.statement("PRAGMA data_version");
  const bool isKnown = dataVersion.step() == SQLITE_ROW;
  const sqlite3_int64 version = isKnown ? dataVersion.integer(0) : 0;
  dataVersion.reset();
  if (isKnown && version_ == version) return Outcome::Same;
  if (!isKnown || !readRows(rows)) {
    failure = file_.connection().whatFailed();
    isDamaged_ = file_.connection().failureCode() == SQLITE_CORRUPT;
    version_.reset();
    file_.abandon();
    return Outcome::Failed;
  }
  isDamaged_ = false;
  version_ = version;
  return Outcome::Changed;
}

bool KeyedFile::write(Changes& changes, std::string& failure) {
  Changes tooLong;
  const bool isDone = file_.change(failure, [&] { return isWhole() && writeRows(changes, tooLong); });
  if (isDone) changes = std::move(tooLong);
  return isDone;
}

/// If the database is damaged, a write elsewhere in it could succeed and destroy data that could still be recovered.
bool KeyedFile::isWhole() {
  if (!isDamaged_) return true;
  std::vector<Row> rows;
  isDamaged_ = !readRows(rows);
  return !isDamaged_;
}

bool KeyedFile::writeRows(const Changes& changes, Changes& tooLong) {
  for (const auto& [key, value] : changes) {
    const auto [stored, isText] = storedKey(key);
    sqlite::Statement& statement = file_.statement(value ? table_.put : table_.remove);
    if (isText) {
      statement.bindText(1, stored);
    } else {
      statement.bindBlob(1, stored);
    }
    if (value) statement.bindBlob(2, *value);
    const int result = statement.run();
    if (result == SQLITE_TOOBIG) {
      if (value) tooLong.insert({key, value});  // a key that is too long is not in the database to be removed
    } else if (result != SQLITE_OK) {
      return false;
    }
  }
  return true;
}

bool KeyedFile::readRows(std::vector<Row>& rows) {
  sqlite::Statement& select = file_.statement(table_.all);
  int result = SQLITE_DONE;
  while ((result = select.step()) == SQLITE_ROW) {
    const bool isText = select.type(0) == SQLITE_TEXT;
    const std::string_view key = select.bytes(0);
    rows.push_back({isText ? NSString(key) : keyFromUnits(key), std::string(select.bytes(1))});
  }
  select.reset();
  return result == SQLITE_DONE;
}

}  // namespace norvik::detail
