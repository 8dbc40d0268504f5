#include "NorvikCore/platform/object/Weak.h"

#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"

namespace norvik::detail {

SideRecord* weakRecord(const NSObject* object) noexcept {
  SideRecord* record = ObjectAccess::isDying(*object) ? SideRecord::find(*object) : &SideRecord::findOrMake(*object);
  if (!record) return &SideRecord::makeGone();
  record->retain();
  return record;
}

void retain(SideRecord* record) noexcept { record->retain(); }
void release(SideRecord* record) noexcept { record->release(); }
NSObject* lock(SideRecord* record) noexcept { return record->retainedObject(); }
bool isGone(SideRecord* record) noexcept { return record->isGone(); }

}  // namespace norvik::detail
