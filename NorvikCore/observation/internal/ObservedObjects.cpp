#include "NorvikCore/observation/internal/ObservedObjects.h"

#include <algorithm>

namespace norvik::detail {
namespace {

bool isFor(const _FBKVOInfo& info, const NSString& keyPath) {
  return info.keyPath().isIdenticalTo(keyPath) || info.keyPath() == keyPath;
}

}  // namespace

bool InfoSet::add(const Ref<_FBKVOInfo>& info) {
  for (const Ref<_FBKVOInfo>& present : infos()) {
    if (isFor(*present, info->keyPath())) return false;
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
  if (!many_) return one_ && isFor(*one_, keyPath) ? std::move(one_) : nullptr;
  const auto found = std::ranges::find_if(*many_, [&](const Ref<_FBKVOInfo>& info) { return isFor(*info, keyPath); });
  if (found == many_->end()) return nullptr;
  Ref<_FBKVOInfo> taken = std::move(*found);
  many_->erase(found);
  if (many_->empty()) many_ = nullptr;
  return taken;
}

}  // namespace norvik::detail
