#include "NorvikCore/platform/keyvalue/internal/ChangeDelivery.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"

#include <new>
#include <utility>

namespace norvik::detail {

NSObject* ChangeDelivery::kept(SideRecord* record) noexcept {
  // An observer that its call released is destroyed before the next call.
  if (kept_ && ObjectAccess::count(*kept_).loadAcquire() == 1) {
    keptRecord_ = nullptr;
    kept_ = nullptr;
  }
  if (record->isOf(object_)) return ObjectAccess::isGoing(object_) ? nullptr : &object_;
  if (record != keptRecord_) {
    keptRecord_ = nullptr;
    kept_ = Ref<NSObject>::adopt(record->retainedObject());
    if (kept_) keptRecord_ = record;
  }
  return kept_.get();
}

void ChangeDelivery::setChangeWithoutValues() noexcept {
  dictionary_.reset();
  change_ = &kernel::madeOnce([] {
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
