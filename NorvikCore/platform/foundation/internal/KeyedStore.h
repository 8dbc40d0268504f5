// NorvikCore/platform/foundation/internal/KeyedStore.h - the values of one database by their keys, kept in memory: read
// from there, written through, and read again after another process has written.
//
//   KeyedStore store(path, preferences);       // which table, how its values are read, what messages call them
//   store.set("rate", value, encodePropertyList(value));
//
// - A read finds what was read or set last. When the last look at the database is more than a quarter of a second
//   ago, it looks first, unless another thread is at the database just then.
// - A write is in the database when set() returns. Where it fails, it is tried again with the next one, with each look,
//   before a fork and at the end of the process; until then it counts in this process only. The first failure after a
//   success is reported on the system console, and so is each with another reason.
//
// Synchronised; calls nobody back.
#pragma once

#include "NorvikCore/platform/foundation/internal/KeyedFile.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/Value.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace norvik::detail {

class KeyedStore final : DatabaseFile::Owner {
 public:
  struct Kind {
    KeyedFile::Table table;
    const char* plural;    ///< "preferences"
    const char* singular;  ///< "preference"
    /// Raises NSException where the bytes are damaged.
    Value (*decode)(const NSString& key, std::string_view bytes);
  };

  /// A value that somebody else has set, or removed.
  struct Change {
    NSString key;
    Value before;
  };

  KeyedStore(std::string path, const Kind& kind);
  KeyedStore(const KeyedStore&) = delete;
  KeyedStore& operator=(const KeyedStore&) = delete;
  ~KeyedStore();

  /// Absent where there is none.
  [[nodiscard]] Value value(const NSString& key);
  /// All, in no order.
  [[nodiscard]] std::vector<std::pair<NSString, Value>> all();

  /// The value does not change any more, and the bytes are its encoding.
  void set(const NSString& key, const Value& value, std::string bytes);
  void remove(const NSString& key);

  /// Writes what is still to be written and looks at the database; false where either fails.
  bool synchronize();

  /// Others have changed something since takeChanges().
  [[nodiscard]] bool hasChanges() const noexcept { return hasChanges_.load(std::memory_order_relaxed); }
  /// Each key once, with the value that it had in this process before.
  [[nodiscard]] std::vector<Change> takeChanges();

 private:
  struct Entry {
    Value value;  ///< absent where the bytes are damaged
    std::string bytes;
  };
  using Entries = std::unordered_map<NSString, Entry>;
  /// What to tell on the system console once no lock is held.
  using Lines = std::vector<std::string>;

  void beforeFork() noexcept override NK_NO_THREAD_SAFETY_ANALYSIS;
  void beforeEnd() noexcept override NK_NO_THREAD_SAFETY_ANALYSIS;

  void look();
  void change(const NSString& key, Entry entry, std::optional<std::string> bytes);
  bool readFile(Lines& lines) NK_REQUIRES(file_);
  bool writeFile(Lines& lines) NK_REQUIRES(file_);
  void merge(std::vector<KeyedFile::Row> rows, Lines& lines) NK_REQUIRES(file_);
  void report(const char* what, const std::string& why, std::string& lastTold, Lines& lines) NK_REQUIRES(file_);

  const Kind kind_;
  Mutex file_;  ///< taken before memory_
  const std::string path_;
  bool isWriteDue_ NK_GUARDED_BY(file_) = false;  ///< the last one failed
  std::string toldOfReading_ NK_GUARDED_BY(file_), toldOfWriting_ NK_GUARDED_BY(file_);

  Mutex memory_;
  Entries entries_ NK_GUARDED_BY(memory_);
  KeyedFile::Changes unwritten_ NK_GUARDED_BY(memory_);
  std::vector<Change> changes_ NK_GUARDED_BY(memory_);
  std::atomic<bool> hasChanges_{false};
  std::atomic<bool> isRead_{false};
  std::atomic<std::int64_t> nextLook_{0};

  KeyedFile database_ NK_GUARDED_BY(file_);  ///< the first to be destroyed: until then a fork may call back
};

}  // namespace norvik::detail
