#include "NorvikCore/observation/internal/ChangeDictionary.h"

#include "NorvikCore/observation/FBKVOController.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"

#include <array>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

/// One dictionary for each shape; empty while the dictionary is in use or after a handler kept it.
using Spares = std::array<Ref<NSDictionary>, 8>;

/// The thread's spare dictionaries; null after they were destroyed at the end of the thread.
Spares* spares() {
  static thread_local bool isGone = false;
  struct Owned {
    ~Owned() { isGone = true; }
    Spares spares;
  };
  static thread_local Owned owned;
  return isGone ? nullptr : &owned.spares;
}

std::size_t shapeOf(const KeyValueChange& change) noexcept {
  return (change.newValue().isAbsent() ? 0u : 1u) | (change.oldValue().isAbsent() ? 0u : 2u) |
         (change.isPrior() ? 4u : 0u);
}

Ref<NSDictionary> made(const NSString& keyPath, const KeyValueChange& change) {
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(5);
  entries.push_back({FBKVONotificationKeyPathKey, keyPath});
  change.forEachEntry([&](const NSString& key, const Value& value) { entries.push_back({key, value}); });
  return make<NSDictionary>(std::move(entries));
}

// The entries are in the order of made(): the key path, the kind, the new value, the old value, the prior mark.

void fill(NSDictionary& dictionary, const NSString& keyPath, const KeyValueChange& change) {
  std::size_t position = 0;
  const Value& present = CollectionAccess::table(dictionary).entries()[position].value;
  if (!present.string()->isIdenticalTo(keyPath)) CollectionAccess::setValueAt(dictionary, position, keyPath);
  ++position;  // the kind
  if (!change.newValue().isAbsent()) CollectionAccess::setValueAt(dictionary, ++position, change.newValue());
  if (!change.oldValue().isAbsent()) CollectionAccess::setValueAt(dictionary, ++position, change.oldValue());
}

void empty(NSDictionary& dictionary, std::size_t shape) {
  const std::size_t values = (shape & 1) + (shape >> 1 & 1);
  for (std::size_t i = 0; i < values; ++i) CollectionAccess::setValueAt(dictionary, 2 + i, Value());
}

}  // namespace

ChangeDictionary::ChangeDictionary(const NSString& keyPath, const KeyValueChange& change) : shape_(shapeOf(change)) {
  if (Spares* unused = spares()) dictionary_ = std::exchange((*unused)[shape_], nullptr);
  if (dictionary_) {
    fill(*dictionary_, keyPath, change);
  } else {
    dictionary_ = made(keyPath, change);
  }
}

ChangeDictionary::~ChangeDictionary() {
  if (!ObjectAccess::isUnshared(*dictionary_)) return;
  empty(*dictionary_, shape_);  // may release objects, whose destruction may make further changes
  if (Spares* unused = spares()) std::swap((*unused)[shape_], dictionary_);
}

}  // namespace norvik::detail
