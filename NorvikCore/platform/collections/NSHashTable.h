// NorvikCore/platform/collections/NSHashTable.h - a set of objects by identity, which are not retained.
//
//   auto views = NSHashTable::weakObjectsHashTable();
//   views->addObject(*view);
//   views->containsObject(*view);          // true until the view is destroyed
//
// Objects are compared by identity and are not retained. A destroyed object is no longer in the table, and a new object
// at the same address is not mistaken for it. Adding, removing and finding take constant time on average; count() is
// linear. The order of allObjects() is unspecified. Confined: one thread at a time. Any thread may destroy the objects
// meanwhile.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

class NSArray;

class NK_EXPORT NSHashTable : public NSObject {
  NK_OBJECT(NSHashTable, NSObject)

  NSHashTable();
  ~NSHashTable() override;
  [[nodiscard]] static Ref<NSHashTable> weakObjectsHashTable() { return make<NSHashTable>(); }

  [[nodiscard]] std::size_t count() const;
  [[nodiscard]] bool containsObject(const NSObject& object) const;
  /// No effect if the object is already in the table.
  void addObject(NSObject& object);
  void removeObject(const NSObject& object);
  void removeAllObjects();
  [[nodiscard]] Ref<NSArray> allObjects() const;

 private:
  struct Table;
  const detail::Hidden<Table> table_;
};

}  // namespace norvik
