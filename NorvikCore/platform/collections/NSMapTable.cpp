#include "NorvikCore/platform/collections/NSMapTable.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/internal/IdentityMap.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace {

struct Held {
  Value kept;
  Weak<NSObject> watched;

  [[nodiscard]] Value value() const { return kept.isAbsent() ? Value(watched.lock()) : kept; }
};

using Map = detail::IdentityMap<Held>;

}  // namespace

struct NSMapTable::Table {
  Table(bool keepsKeys, bool keeps) : map(keepsKeys), keepsValues(keeps) {}

  /// Removes entries whose key or value is destroyed.
  [[nodiscard]] std::vector<Map::Entry> sweep() {
    std::vector<Map::Entry> left;
    map.sweep(left, [](const Map::Entry& e) {
      return e.isGone() || (e.payload.kept.isAbsent() && e.payload.watched.isGone());
    });
    return left;
  }

  Map map;
  const bool keepsValues;
};

NSMapTable::NSMapTable(NSMapTableOptions keyOptions, NSMapTableOptions valueOptions)
    : table_(new Table(keyOptions == NSMapTableStrongMemory, valueOptions == NSMapTableStrongMemory)) {}

NSMapTable::~NSMapTable() = default;

std::size_t NSMapTable::count() const {
  const auto gone = table_->sweep();
  return table_->map.size();
}

Value NSMapTable::objectForKey(const NSObject& key) const {
  const Held* held = table_->map.find(key);
  return held ? held->value() : Value();
}

void NSMapTable::setObject(const Value& object, NSObject& key) {
  Held held;
  if (object.isAbsent()) NSException::raise(NSInvalidArgumentException, "setObject:forKey: was given an absent value");
  if (table_->keepsValues) {
    held.kept = object;
  } else if (NSObject* watched = object.object()) {
    held.watched = Weak<NSObject>(watched);
  } else {
    NSException::raise(NSInvalidArgumentException, "setObject:forKey: only an object can be held weakly");
  }
  std::vector<Map::Entry> left;
  std::swap(table_->map.findOrInsert(key, left), held);  // the old value is released when the table is consistent again
}

void NSMapTable::removeObjectForKey(const NSObject& key) { (void)table_->map.take(key); }

void NSMapTable::removeAllObjects() { (void)table_->map.takeAll(); }

Ref<NSArray> NSMapTable::allKeys() const {
  std::vector<Value> keys;
  table_->map.forEach([&](Ref<NSObject> key, const Held& held) {
    if (!held.value().isAbsent()) keys.push_back(std::move(key));
  });
  return make<NSArray>(std::move(keys));
}

}  // namespace norvik
