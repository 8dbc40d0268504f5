#include "NorvikCore/platform/collections/NSHashTable.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/internal/IdentityMap.h"

namespace norvik {
namespace {

struct Nothing {};
using Set = detail::IdentityMap<Nothing>;

}  // namespace

struct NSHashTable::Table {
  Set set{false};
};

NSHashTable::NSHashTable() : table_(new Table()) {}

NSHashTable::~NSHashTable() = default;

std::size_t NSHashTable::count() const {
  std::vector<Set::Entry> left;
  table_->set.sweep(left);
  return table_->set.size();
}

bool NSHashTable::containsObject(const NSObject& object) const { return table_->set.find(object) != nullptr; }

void NSHashTable::addObject(NSObject& object) {
  std::vector<Set::Entry> left;
  table_->set.findOrInsert(object, left);
}

void NSHashTable::removeObject(const NSObject& object) { (void)table_->set.take(object); }

void NSHashTable::removeAllObjects() { (void)table_->set.takeAll(); }

Ref<NSArray> NSHashTable::allObjects() const {
  std::vector<Value> objects;
  table_->set.forEach([&](Ref<NSObject> object, Nothing) { objects.push_back(std::move(object)); });
  return make<NSArray>(std::move(objects));
}

}  // namespace norvik
