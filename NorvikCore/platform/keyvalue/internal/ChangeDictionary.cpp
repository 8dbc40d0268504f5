#include "NorvikCore/platform/keyvalue/internal/ChangeDictionary.h"

#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"

#include <array>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

/// One dictionary for each shape; empty while the dictionary is in use or after a handler kept it.
using Spares = std::array<Ref<NSDictionary>, 8>;

/// The thread's spare dictionaries; null before its first change and after they were destroyed at its end.
constinit thread_local Spares* spares __attribute__((tls_model("initial-exec"))) = nullptr;

/// Creates them, unless the thread is ending.
void makeSpares() {
  static constinit thread_local bool isEnding = false;
  struct Owned {
    ~Owned() {
      spares = nullptr;
      isEnding = true;
    }
    Spares all;
  };
  if (isEnding) return;
  static thread_local Owned owned;
  spares = &owned.all;
}

std::size_t shapeOf(const KeyValueChange& change) noexcept {
  return (change.newValue().isAbsent() ? 0u : 1u) | (change.oldValue().isAbsent() ? 0u : 2u) |
         (change.isPrior() ? 4u : 0u);
}

Ref<NSDictionary> made(const NSString& pathKey, const NSString& keyPath, const KeyValueChange& change) {
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(5);
  entries.push_back({pathKey, keyPath});
  change.forEachEntry([&](const NSString& key, const Value& value) { entries.push_back({key, value}); });
  return make<NSDictionary>(std::move(entries));
}

// The entries are in the order of made(): the key path, the kind, the new value, the old value, the prior mark.

const NSString& keyPathIn(NSDictionary& dictionary) noexcept {
  return *CollectionAccess::table(dictionary).entries()[0].value.string();
}

void fill(NSDictionary& dictionary, const NSString& keyPath, const KeyValueChange& change) {
  std::size_t position = 0;
  if (!keyPathIn(dictionary).isIdenticalTo(keyPath)) CollectionAccess::setValueAt(dictionary, position, keyPath);
  ++position;  // the kind
  if (!change.newValue().isAbsent()) CollectionAccess::setValueAt(dictionary, ++position, change.newValue());
  if (!change.oldValue().isAbsent()) CollectionAccess::setValueAt(dictionary, ++position, change.oldValue());
}

void empty(NSDictionary& dictionary, std::size_t shape) {
  const std::size_t values = (shape & 1) + (shape >> 1 & 1);
  for (std::size_t i = 0; i < values; ++i) CollectionAccess::setValueAt(dictionary, 2 + i, Value());
}

}  // namespace

ChangeDictionary::ChangeDictionary(const NSString& pathKey, const NSString& keyPath, const KeyValueChange& change)
    : shape_(shapeOf(change)) {
  if (!spares) makeSpares();
  if (spares) dictionary_ = std::exchange((*spares)[shape_], nullptr);
  if (dictionary_) {
    fill(*dictionary_, keyPath, change);
  } else {
    dictionary_ = made(pathKey, keyPath, change);
  }
}

ChangeDictionary::~ChangeDictionary() {
  if (!ObjectAccess::isUnshared(*dictionary_)) return;
  empty(*dictionary_, shape_);  // may release objects, whose destruction may make further changes
  if (spares) std::swap((*spares)[shape_], dictionary_);
}

bool ChangeDictionary::isOf(const NSString& keyPath) const noexcept {
  const NSString& present = keyPathIn(*dictionary_);
  return present.isIdenticalTo(keyPath) || present == keyPath;
}

}  // namespace norvik::detail
