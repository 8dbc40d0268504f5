// NorvikCore/platform/collections/NSMapTable.h - a map with objects as keys, by identity; keys and values may be weak.
//
//   auto rows = NSMapTable::mapTableWithKeyOptions(NSMapTableWeakMemory, NSMapTableStrongMemory);
//   rows->setObject(7, *slip);             // the value, then its key
//   rows->objectForKey(*slip);             // 7
//   slip = nullptr;                        // the entry is removed with its key
//   rows->count();                         // 0
//
// Keys are compared by identity: two equal texts boxed in two objects are two keys. A weak key or value is not
// retained; once it is destroyed, its entry reads as missing, also for a new object at the same address. Strong values
// for a destroyed key are released at one of the next changes, or immediately by count().
//
// Looking up, setting and removing take constant time on average; count() is linear if keys or values are weak. The
// order of allKeys() is unspecified. Confined: one thread at a time. Any thread may destroy weak keys and values
// meanwhile.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

namespace norvik {

class NSArray;

enum NSMapTableOptions : std::uint64_t { NSMapTableStrongMemory = 0, NSMapTableWeakMemory = 5 };

class NK_EXPORT NSMapTable : public NSObject {
  NK_OBJECT(NSMapTable, NSObject)

  NSMapTable(NSMapTableOptions keyOptions, NSMapTableOptions valueOptions);
  ~NSMapTable() override;
  [[nodiscard]] static Ref<NSMapTable> mapTableWithKeyOptions(NSMapTableOptions keyOptions,
                                                              NSMapTableOptions valueOptions) {
    return make<NSMapTable>(keyOptions, valueOptions);
  }

  [[nodiscard]] std::size_t count() const;
  /// Absent if there is none.
  [[nodiscard]] Value objectForKey(const NSObject& key) const;
  /// Raises NSInvalidArgumentException for an absent value, and if values are weak, for a value that is not an object.
  void setObject(const Value& object, NSObject& key);
  void removeObjectForKey(const NSObject& key);
  void removeAllObjects();
  [[nodiscard]] Ref<NSArray> allKeys() const;

 private:
  struct Table;
  const detail::Hidden<Table> table_;
};

}  // namespace norvik
