#include "NorvikCore/platform/foundation/internal/KeyedStore.h"

#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <utility>

namespace norvik::detail {
namespace {

constexpr std::int64_t nanosecondsBetweenLooks = 250'000'000;

/// The beginning of a key, for a message.
std::string beginning(const NSString& key) {
  constexpr std::size_t most = 80;
  return key.length() <= most ? key.utf8() : key.substringToIndex(most).utf8() + "...";
}

void tell(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) NSLog("%@", line);
}

}  // namespace

KeyedStore::KeyedStore(std::string path, const Kind& kind)
    : kind_(kind), path_(path), database_(std::move(path), kind.table, file_, this) {}

// After the fork, both sides have the unwritten changes in memory, and both would write them.
void KeyedStore::beforeFork() noexcept {
  Lines untold;
  const std::string told = toldOfWriting_;
  writeFile(untold);
  toldOfWriting_ = told;
}

void KeyedStore::beforeEnd() noexcept {
  Lines lines;
  writeFile(lines);
  tell(lines);
}

KeyedStore::~KeyedStore() {
  const MutexLock lock(file_);
  beforeEnd();
}

Value KeyedStore::value(const NSString& key) {
  look();
  const MutexLock lock(memory_);
  const auto found = entries_.find(key);
  return found == entries_.end() ? Value() : found->second.value;
}

std::vector<std::pair<NSString, Value>> KeyedStore::all() {
  look();
  std::vector<std::pair<NSString, Value>> all;
  const MutexLock lock(memory_);
  all.reserve(entries_.size());
  for (const auto& [key, entry] : entries_) {
    if (!entry.value.isAbsent()) all.emplace_back(key, entry.value);
  }
  return all;
}

void KeyedStore::look() {
  const bool isRead = isRead_.load(std::memory_order_acquire);
  if (isRead && kernel::monotonicNanoseconds() < nextLook_.load(std::memory_order_relaxed)) [[likely]]
    return;
  Lines lines;
  if (!isRead) {
    const MutexLock lock(file_);
    if (!isRead_.load(std::memory_order_relaxed)) readFile(lines);
  } else if (file_.try_lock()) {
    readFile(lines);
    if (isWriteDue_) writeFile(lines);
    file_.unlock();
  }
  tell(lines);
}

void KeyedStore::set(const NSString& key, const Value& value, std::string bytes) { change(key, {value, bytes}, bytes); }

void KeyedStore::remove(const NSString& key) { change(key, {}, std::nullopt); }

void KeyedStore::change(const NSString& key, Entry entry, std::optional<std::string> bytes) {
  look();
  Lines lines;
  Entry replaced;  // destroyed after the locks are released
  {
    const MutexLock lock(file_);
    {
      const MutexLock memoryLock(memory_);
      if (bytes) {
        replaced = std::exchange(entries_[key], std::move(entry));
      } else if (const auto found = entries_.find(key); found != entries_.end()) {
        replaced = std::move(found->second);
        entries_.erase(found);
      }
      unwritten_[key] = std::move(bytes);
    }
    writeFile(lines);
  }
  tell(lines);
}

bool KeyedStore::synchronize() {
  Lines lines;
  bool isDone = false;
  {
    const MutexLock lock(file_);
    isDone = writeFile(lines);
    isDone = readFile(lines) && isDone;
  }
  tell(lines);
  return isDone;
}

std::vector<KeyedStore::Change> KeyedStore::takeChanges() {
  const MutexLock lock(memory_);
  hasChanges_.store(false, std::memory_order_relaxed);
  return std::exchange(changes_, {});
}

bool KeyedStore::writeFile(Lines& lines) {
  KeyedFile::Changes changes;
  {
    const MutexLock lock(memory_);
    changes = unwritten_;
  }
  if (changes.empty()) return true;
  std::string failure;
  isWriteDue_ = !database_.write(changes, failure);
  if (isWriteDue_) {
    report("written",
           failure + ". Values that are set are kept in memory, and writing is tried again until this process ends",
           toldOfWriting_, lines);
    return false;
  }
  if (changes.empty()) {
    toldOfWriting_.clear();
  } else {
    report("written",
           "the value of \"" + beginning(changes.begin()->first) +
               "\" is too long to be stored. It is kept until this process ends",
           toldOfWriting_, lines);
  }
  const MutexLock lock(memory_);
  unwritten_ = std::move(changes);  // nothing was added meanwhile, because that needs the lock on the file
  return unwritten_.empty();
}

bool KeyedStore::readFile(Lines& lines) {
  nextLook_.store(kernel::monotonicNanoseconds() + nanosecondsBetweenLooks, std::memory_order_relaxed);
  std::vector<KeyedFile::Row> rows;
  std::string failure;
  const KeyedFile::Outcome outcome = database_.readIfChanged(rows, failure);
  if (outcome == KeyedFile::Outcome::Failed) {
    report("read", failure, toldOfReading_, lines);
  } else {
    toldOfReading_.clear();
  }
  if (outcome == KeyedFile::Outcome::Changed) merge(std::move(rows), lines);
  isRead_.store(true, std::memory_order_release);
  return outcome != KeyedFile::Outcome::Failed;
}

void KeyedStore::merge(std::vector<KeyedFile::Row> rows, Lines& lines) {
  Entries merged;
  std::vector<Change> changes;
  Entries replaced;  // destroyed after the lock is released
  const MutexLock lock(memory_);
  for (auto& [key, bytes] : rows) {
    if (unwritten_.contains(key)) continue;
    const auto known = entries_.find(key);
    if (known != entries_.end() && known->second.bytes == bytes) {
      merged[key] = known->second;
      continue;
    }
    Entry entry;
    try {
      entry.value = kind_.decode(key, bytes);
    } catch (const NSException& e) {
      lines.push_back("The " + std::string(kind_.singular) + " \"" + beginning(key) + "\" in " + path_ +
                      " is damaged: " + e.reason().utf8());
    }
    entry.bytes = std::move(bytes);
    changes.push_back({key, known == entries_.end() ? Value() : known->second.value});
    merged[key] = std::move(entry);
  }
  for (const auto& [key, entry] : entries_) {
    if (unwritten_.contains(key)) {
      merged[key] = entry;
    } else if (!merged.contains(key)) {
      changes.push_back({key, entry.value});
    }
  }
  replaced = std::exchange(entries_, std::move(merged));
  if (!isRead_.load(std::memory_order_relaxed)) return;
  for (Change& change : changes) {
    const auto isSame = [&](const Change& earlier) { return earlier.key == change.key; };
    if (std::ranges::none_of(changes_, isSame)) changes_.push_back(std::move(change));
  }
  hasChanges_.store(!changes_.empty(), std::memory_order_relaxed);
}

void KeyedStore::report(const char* what, const std::string& why, std::string& lastTold, Lines& lines) {
  std::string line = "The " + std::string(kind_.plural) + " in " + path_ + " cannot be " + what + ": " + why + ".";
  if (line == lastTold) return;
  lastTold = line;
  lines.push_back(std::move(line));
}

}  // namespace norvik::detail
