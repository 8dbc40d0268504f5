// NorvikCore/platform/foundation/internal/KeyedStore.h - the values of one database by their keys. They are kept in
// memory, written through, and read again after another process has written.
//
//   KeyedStore store(path, preferences);       // the table, the decoder of its values, and words for messages
//   store.set("rate", value, encodePropertyList(value));
//
// - A read returns the value that was read or set last. If the last check of the database was more than a quarter of a
//   second ago, it checks the database first, unless another thread is using the database at that moment.
// - A write is in the database when set() returns. If it fails, it is repeated with the next write, by each check,
//   before a fork and at the end of the process; until then the value is used in this process only. The first failure
//   after a success is reported on the system console, and so is each failure with another reason.
//
// Synchronised. Makes no callbacks.
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
    /// Raises NSException if the bytes are damaged.
    Value (*decode)(const NSString& key, std::string_view bytes);
  };

  /// A value that another process or store has set or removed.
  struct Change {
    NSString key;
    Value before;
  };

  KeyedStore(std::string path, const Kind& kind);
  KeyedStore(const KeyedStore&) = delete;
  KeyedStore& operator=(const KeyedStore&) = delete;
  ~KeyedStore();

  /// Absent if there is none.
  [[nodiscard]] Value value(const NSString& key);
  /// All values, in no order.
  [[nodiscard]] std::vector<std::pair<NSString, Value>> all();

  /// The value must be immutable, and `bytes` its encoding.
  void set(const NSString& key, const Value& value, std::string bytes);
  void remove(const NSString& key);

  /// Writes what is still unwritten and checks the database; false if either fails.
  bool synchronize();

  /// Values were changed from outside since takeChanges().
  [[nodiscard]] bool hasChanges() const noexcept { return hasChanges_.load(std::memory_order_relaxed); }
  /// Each key once, with the value that it had in this process before the change.
  [[nodiscard]] std::vector<Change> takeChanges();

 private:
  struct Entry {
    Value value;  ///< absent if the bytes are damaged
    std::string bytes;
  };
  using Entries = std::unordered_map<NSString, Entry>;
  /// Lines for the system console, written when no lock is held.
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
  Mutex file_;  ///< locked before memory_
  const std::string path_;
  bool isWriteDue_ NK_GUARDED_BY(file_) = false;  ///< the last write failed
  std::string toldOfReading_ NK_GUARDED_BY(file_), toldOfWriting_ NK_GUARDED_BY(file_);

  Mutex memory_;
  Entries entries_ NK_GUARDED_BY(memory_);
  KeyedFile::Changes unwritten_ NK_GUARDED_BY(memory_);
  std::vector<Change> changes_ NK_GUARDED_BY(memory_);
  std::atomic<bool> hasChanges_{false};
  std::atomic<bool> isRead_{false};
  std::atomic<std::int64_t> nextLook_{0};

  KeyedFile database_ NK_GUARDED_BY(file_);  ///< destroyed first, because a fork may call back until then
};

}  // namespace norvik::detail
