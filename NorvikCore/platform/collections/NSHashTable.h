// NorvikCore/platform/collections/NSHashTable.h - a set of objects as such, which it only watches.
//
//   auto views = NSHashTable::weakObjectsHashTable();
//   views->addObject(*view);
//   views->containsObject(*view);          // until the view is gone
//
// Objects are compared by identity and are not kept: one that is gone is not in the table any more, and an object made
// at the same address is not taken for it. Adding, removing and finding take constant time on average; count() is
// linear. The order of allObjects() says nothing. Confined: one thread at a time. The objects may go on any thread
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
  /// Does nothing where the object is in already.
  void addObject(NSObject& object);
  void removeObject(const NSObject& object);
  void removeAllObjects();
  [[nodiscard]] Ref<NSArray> allObjects() const;

 private:
  struct Table;
  const detail::Hidden<Table> table_;
};

}  // namespace norvik
