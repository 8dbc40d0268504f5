#include "NorvikCore/observation/internal/ObservedObjects.h"

#include <algorithm>

namespace norvik::detail {

bool InfoSet::add(const Ref<_FBKVOInfo>& info) {
  for (const Ref<_FBKVOInfo>& present : infos()) {
    if (present->keyPath() == info->keyPath()) return false;
  }
  if (many_) {
    many_->push_back(info);
  } else if (one_) {
    many_ = std::make_unique<std::vector<Ref<_FBKVOInfo>>>();
    many_->push_back(std::move(one_));
    many_->push_back(info);
  } else {
    one_ = info;
  }
  return true;
}

Ref<_FBKVOInfo> InfoSet::take(const NSString& keyPath) {
  if (!many_) return one_ && one_->keyPath() == keyPath ? std::move(one_) : nullptr;
  const auto found =
      std::ranges::find_if(*many_, [&](const Ref<_FBKVOInfo>& info) { return info->keyPath() == keyPath; });
  if (found == many_->end()) return nullptr;
  Ref<_FBKVOInfo> taken = std::move(*found);
  many_->erase(found);
  if (many_->empty()) many_ = nullptr;
  return taken;
}

}  // namespace norvik::detail
