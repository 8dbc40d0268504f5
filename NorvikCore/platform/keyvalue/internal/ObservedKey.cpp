#include "NorvikCore/platform/keyvalue/internal/ObservedKey.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

namespace norvik::detail {
namespace {

/// A cache of recently requested keys. Class and key determine the place, so one comparison is sufficient.
constinit std::array<std::atomic<const ObservedKey*>, 256> latest{};

std::atomic<const ObservedKey*>& latestAt(const Class& theClass, std::string_view key) noexcept {
  std::uint64_t mixed = reinterpret_cast<std::uintptr_t>(&theClass) + key.size();
  if (!key.empty()) {
    mixed = mixed * 31 + static_cast<unsigned char>(key.front());
    mixed = mixed * 31 + static_cast<unsigned char>(key[key.size() / 2]);
    mixed = mixed * 31 + static_cast<unsigned char>(key.back());
  }
  return latest[(mixed * 0x9E3779B97F4A7C15u) >> 56];
}

std::unique_ptr<const ObservedKey> describe(const Class& theClass, const NSString& key) {
  std::vector<NSString> affecting = theClass.keysAffecting(key);
  const Property* property = theClass.property(key);
  if (!property && affecting.empty()) return nullptr;
  for (std::size_t i = 0; i < affecting.size(); ++i) {
    for (NSString& further : theClass.keysAffecting(affecting[i])) {
      if (further != key && std::ranges::find(affecting, further) == affecting.end()) {
        affecting.push_back(std::move(further));
      }
    }
  }
  return std::unique_ptr<const ObservedKey>(
      new ObservedKey{theClass, property ? property->name : key, property != nullptr, std::move(affecting)});
}

const ObservedKey* find(const Class& theClass, const NSString& key) {
  static constinit Mutex mutex;
  auto& known = kernel::madeOnce([] { return new std::map<std::pair<const Class*, NSString>, const ObservedKey*>; });
  {
    MutexLock lock(mutex);
    if (const auto found = known.find({&theClass, key}); found != known.end()) return found->second;
  }
  std::unique_ptr<const ObservedKey> made = describe(theClass, key);
  if (!made) return nullptr;
  MutexLock lock(mutex);
  const ObservedKey*& kept = known[{&theClass, made->key}];
  if (!kept) kept = made.release();
  return kept;
}

}  // namespace

const ObservedKey* observedKey(const Class& theClass, const NSString& key) {
  auto& place = latestAt(theClass, key.view());
  const ObservedKey* seen = place.load(std::memory_order_acquire);
  if (seen && &seen->theClass == &theClass && (seen->key.isIdenticalTo(key) || seen->key == key)) return seen;
  const ObservedKey* found = find(theClass, key);
  if (found) place.store(found, std::memory_order_release);
  return found;
}

}  // namespace norvik::detail
