// NorvikCore/observation/internal/ObservedObjects.h - the objects that one controller observes, and the observations of
// each.
#pragma once

#include "NorvikCore/observation/internal/_FBKVOInfo.h"
#include "NorvikCore/platform/collections/internal/IdentityMap.h"

#include <memory>
#include <span>
#include <vector>

namespace norvik::detail {

/// The observations of one object, with distinct key paths. Most objects have one observation, which needs no
/// allocation.
class InfoSet {
 public:
  /// False if the key path is already in the set.
  bool add(const Ref<_FBKVOInfo>& info);
  /// Removes and returns the observation with that key path; empty if there is none.
  [[nodiscard]] Ref<_FBKVOInfo> take(const NSString& keyPath);
  [[nodiscard]] std::span<const Ref<_FBKVOInfo>> infos() const noexcept {
    if (many_) return *many_;
    return {&one_, one_ ? std::size_t{1} : std::size_t{0}};
  }

 private:
  Ref<_FBKVOInfo> one_;
  std::unique_ptr<std::vector<Ref<_FBKVOInfo>>> many_;  ///< all observations, once there have been two
};

class ObservedObjects : public IdentityMap<InfoSet> {
 public:
  using IdentityMap::IdentityMap;
};

}  // namespace norvik::detail
