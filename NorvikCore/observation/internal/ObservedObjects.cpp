#include "NorvikCore/observation/internal/ObservedObjects.h"

#include "NorvikCore/platform/object/internal/ObjectAccess.h"

#include <algorithm>
#include <memory>

namespace norvik::detail {
namespace {

bool isFor(const _FBKVOInfo& info, const NSString& keyPath) {
  return info.keyPath().isIdenticalTo(keyPath) || info.keyPath() == keyPath;
}

}  // namespace

void InfoSet::releaseAll() noexcept {
  for (_FBKVOInfo* info : infos()) detail::release(info);
  delete many();
}

bool InfoSet::add(_FBKVOInfo& info) {
  for (const _FBKVOInfo* present : infos()) {
    if (isFor(*present, info.keyPath())) return false;
  }
  if (Many* several = many()) {
    several->push_back(&info);
  } else if (content_) {
    auto made = std::make_unique<Many>(std::initializer_list<_FBKVOInfo*>{content_, &info});
    content_ = reinterpret_cast<_FBKVOInfo*>(reinterpret_cast<std::uintptr_t>(made.release()) + 1);
  } else {
    content_ = &info;
  }
  auto& count = ObjectAccess::count(info);
  count.storeRelaxed(count.loadRelaxed() + 1);  // no other thread can change it
  return true;
}

Ref<_FBKVOInfo> InfoSet::take(const NSString& keyPath) {
  Many* several = many();
  if (!several) {
    // The observation is about to be ended and destroyed, and if there are many, it is in no cache: its lines are
    // loaded at once, not one after another.
    if (content_) __builtin_prefetch(content_ + 1);
    const bool isFound = content_ && isFor(*content_, keyPath);
    return isFound ? Ref<_FBKVOInfo>::adopt(std::exchange(content_, nullptr)) : nullptr;
  }
  const auto found = std::ranges::find_if(*several, [&](const _FBKVOInfo* info) { return isFor(*info, keyPath); });
  if (found == several->end()) return nullptr;
  Ref<_FBKVOInfo> taken = Ref<_FBKVOInfo>::adopt(*found);
  several->erase(found);
  if (several->empty()) {
    delete several;
    content_ = nullptr;
  }
  return taken;
}

}  // namespace norvik::detail
