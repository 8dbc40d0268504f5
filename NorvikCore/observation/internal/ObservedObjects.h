// NorvikCore/observation/internal/ObservedObjects.h - what one controller observes: objects, and the observations of
// each.
#pragma once

#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/platform/collections/internal/IdentityMap.h"

#include <memory>
#include <span>
#include <vector>

namespace norvik::detail {

/// The observations of one object, with distinct key paths. Most objects have one, which takes no allocation.
class InfoSet {
 public:
  /// False where the key path is in already.
  bool add(const Ref<_FBKVOInfo>& info);
  /// The one with that key path, taken out; empty where there is none.
  [[nodiscard]] Ref<_FBKVOInfo> take(const NSString& keyPath);
  [[nodiscard]] std::span<const Ref<_FBKVOInfo>> infos() const noexcept {
    if (many_) return *many_;
    return {&one_, one_ ? std::size_t{1} : std::size_t{0}};
  }

 private:
  Ref<_FBKVOInfo> one_;
  std::unique_ptr<std::vector<Ref<_FBKVOInfo>>> many_;  ///< all of them, as soon as there were two
};

class ObservedObjects : public IdentityMap<InfoSet> {
 public:
  using IdentityMap::IdentityMap;
};

}  // namespace norvik::detail
