#include "NorvikCore/platform/foundation/internal/PreferenceStore.h"

#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/foundation/internal/PropertyList.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/runtime/NSException.h"

#include <algorithm>
#include <utility>

namespace norvik::detail {
namespace {

constexpr std::int64_t nanosecondsBetweenLooks = 250'000'000;

void tell(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) NSLog("%@", line);
}

}  // namespace

/// All stores, for what concerns the process.
class PreferenceStores {
 public:
  static PreferenceStores& shared() {
    static auto& stores = *new PreferenceStores;
    return stores;
  }

  void add(PreferenceStore& store) {
    const MutexLock lock(mutex_);
    store.next_ = first_;
    if (first_ != nullptr) first_->previous_ = &store;
    first_ = &store;
  }

  void remove(PreferenceStore& store) {
    const MutexLock lock(mutex_);
    (store.previous_ != nullptr ? store.previous_->next_ : first_) = store.next_;
    if (store.next_ != nullptr) store.next_->previous_ = store.previous_;
  }

 private:
  PreferenceStores() {
    kernel::atFork(&beforeFork, &afterFork, &afterFork);
    atProcessEnd(&closeAll);
  }

  // Every lock is held by the forking thread, so that the child finds all of them free and nothing half done.
  static void beforeFork() NK_NO_THREAD_SAFETY_ANALYSIS {
    shared().mutex_.lock();
    for (PreferenceStore* store = shared().first_; store != nullptr; store = store->next_) {
      store->file_.lock();
      store->database_.closeQuickly();
      store->memory_.lock();
    }
  }
  static void afterFork() NK_NO_THREAD_SAFETY_ANALYSIS {
    for (PreferenceStore* store = shared().first_; store != nullptr; store = store->next_) {
      store->memory_.unlock();
      store->file_.unlock();
    }
    shared().mutex_.unlock();
  }

  // Other threads may still be at work, or have ended in the middle of it: what is taken stays open.
  static void closeAll() NK_NO_THREAD_SAFETY_ANALYSIS {
    if (!shared().mutex_.try_lock()) return;
    for (PreferenceStore* store = shared().first_; store != nullptr; store = store->next_) {
      if (!store->file_.try_lock()) continue;
      store->database_.close();
      store->file_.unlock();
    }
    shared().mutex_.unlock();
  }

  Mutex mutex_;
  PreferenceStore* first_ NK_GUARDED_BY(mutex_) = nullptr;
};

PreferenceStore::PreferenceStore(std::string path) : database_(path), path_(std::move(path)) {
  PreferenceStores::shared().add(*this);
}

PreferenceStore::~PreferenceStore() { PreferenceStores::shared().remove(*this); }

Value PreferenceStore::value(const NSString& key) {
  look();
  const MutexLock lock(memory_);
  const auto found = entries_.find(key);
  return found == entries_.end() ? Value() : found->second.value;
}

std::vector<std::pair<NSString, Value>> PreferenceStore::all() {
  look();
  std::vector<std::pair<NSString, Value>> all;
  const MutexLock lock(memory_);
  all.reserve(entries_.size());
  for (const auto& [key, entry] : entries_) {
    if (!entry.value.isAbsent()) all.emplace_back(key, entry.value);
  }
  return all;
}

void PreferenceStore::look() {
  const bool isRead = isRead_.load(std::memory_order_acquire);
  if (isRead && kernel::monotonicNanoseconds() < nextLook_.load(std::memory_order_relaxed)) [[likely]]
    return;
  Lines lines;
  if (!isRead) {
    const MutexLock lock(file_);
    if (!isRead_.load(std::memory_order_relaxed)) readFile(lines);
  } else if (file_.try_lock()) {
    readFile(lines);
    file_.unlock();
  }
  tell(lines);
}

void PreferenceStore::set(const NSString& key, const Value& value, std::string bytes) {
  change(key, {value, bytes}, bytes);
}

void PreferenceStore::remove(const NSString& key) { change(key, {}, std::nullopt); }

void PreferenceStore::change(const NSString& key, Entry entry, std::optional<std::string> bytes) {
  look();
  Lines lines;
  Entry replaced;  // goes after the locks
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

bool PreferenceStore::synchronize() {
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

std::vector<PreferenceStore::Change> PreferenceStore::takeChanges() {
  const MutexLock lock(memory_);
  hasChanges_.store(false, std::memory_order_relaxed);
  return std::exchange(changes_, {});
}

bool PreferenceStore::writeFile(Lines& lines) {
  PreferenceFile::Changes changes;
  {
    const MutexLock lock(memory_);
    changes = unwritten_;
  }
  if (changes.empty()) return true;
  std::string failure;
  if (!database_.write(changes, failure)) {
    report("written", failure + ". What is set lasts until this process ends", toldOfWriting_, lines);
    return false;
  }
  toldOfWriting_.clear();
  const MutexLock lock(memory_);
  unwritten_.clear();  // nothing was added meanwhile: that takes the lock on the file
  return true;
}

bool PreferenceStore::readFile(Lines& lines) {
  nextLook_.store(kernel::monotonicNanoseconds() + nanosecondsBetweenLooks, std::memory_order_relaxed);
  std::vector<PreferenceFile::Row> rows;
  std::string failure;
  const PreferenceFile::Outcome outcome = database_.readIfChanged(rows, failure);
  if (outcome == PreferenceFile::Outcome::Failed) {
    report("read", failure, toldOfReading_, lines);
  } else {
    toldOfReading_.clear();
  }
  if (outcome == PreferenceFile::Outcome::Changed) merge(std::move(rows), lines);
  isRead_.store(true, std::memory_order_release);
  return outcome != PreferenceFile::Outcome::Failed;
}

void PreferenceStore::merge(std::vector<PreferenceFile::Row> rows, Lines& lines) {
  Entries merged;
  std::vector<Change> changes;
  Entries replaced;  // goes after the lock
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
      entry.value = decodePropertyList(bytes);
    } catch (const NSException& e) {
      lines.push_back("The preference \"" + key.utf8() + "\" in " + path_ + " is damaged: " + e.reason().utf8());
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

void PreferenceStore::report(const char* what, const std::string& why, std::string& lastTold, Lines& lines) {
  std::string line = "The preferences in " + path_ + " cannot be " + what + ": " + why + ".";
  if (line == lastTold) return;
  lastTold = line;
  lines.push_back(std::move(line));
}

}  // namespace norvik::detail
