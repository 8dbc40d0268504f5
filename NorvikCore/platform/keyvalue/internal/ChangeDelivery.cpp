#include "NorvikCore/platform/keyvalue/internal/ChangeDelivery.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"

#include <new>
#include <utility>

namespace norvik::detail {

NSObject* ChangeDelivery::kept(SideRecord* record) noexcept {
  if (keptRecord_ && isLeft()) leave();  // so an observer that its call released is destroyed before the next call
  if (record->isOf(object_)) return ObjectAccess::isGoing(object_) ? nullptr : &object_;
  if (record == keptRecord_) return kept_;
  if (keptRecord_) leave();
  kept_ = record->claimObject(isClaimed_);
  if (!kept_) {
    kept_ = record->retainedObject();
    isRetained_ = kept_;
  }
  if (kept_) keptRecord_ = record;
  return kept_;
}

/// True if all others have released the kept observer.
bool ChangeDelivery::isLeft() const noexcept {
  return isClaimed_ ? keptRecord_->isPassedHere() : isRetained_ && ObjectAccess::count(*kept_).loadAcquire() == 1;
}

void ChangeDelivery::leave() noexcept {
  SideRecord* const record = std::exchange(keptRecord_, nullptr);
  NSObject* const object = std::exchange(kept_, nullptr);
  if (std::exchange(isClaimed_, false)) {
    record->endClaim();
  } else if (std::exchange(isRetained_, false)) {
    release(object);
  }
}

const KeyValueChange& ChangeDelivery::withoutValues() noexcept {
  return kernel::madeOnce([] {
    alignas(KeyValueChange) static constinit unsigned char memory[sizeof(KeyValueChange)]{};
    return ::new (memory) KeyValueChange(Value(), Value(), false);
  });
}

const NSDictionary& ChangeDelivery::dictionary(const NSString& pathKey, const NSString& keyPath) {
  if (!dictionary_ || !dictionary_->isOf(keyPath)) {
    dictionary_.reset();
    dictionary_.emplace(pathKey, keyPath, *change_);
  }
  return **dictionary_;
}

}  // namespace norvik::detail
