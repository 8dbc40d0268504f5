#include "NorvikCore/platform/object/AssociatedObjects.h"

#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace norvik {
namespace {

struct Association {
  const void* key = nullptr;
  Value value;            ///< absent if an object is not retained
  Weak<NSObject> object;  ///< an object that is not retained
};

}  // namespace

// Values are released only outside the record's lock, because an object that is destroyed may call back.
struct detail::AssociationList {
  Association first;  ///< most objects have one, so it costs one allocation
  std::vector<Association> further;

  Association* find(const void* key) {
    if (first.key == key) return &first;
    const auto found = std::ranges::find(further, key, &Association::key);
    return found == further.end() ? nullptr : &*found;
  }
};

namespace {

using detail::AssociationList;
using detail::SideRecord;
using detail::WordLock;

void removeKey(const NSObject& object, const void* key) {
  SideRecord* record = SideRecord::find(object);
  if (!record) return;
  std::unique_ptr<AssociationList> last;  // these two outlive the lock
  Association removed;
  WordLock lock(record->mutex);
  Association* association = record->associations ? record->associations->find(key) : nullptr;
  if (!association) return;
  auto& further = record->associations->further;
  if (further.empty()) {
    last.reset(std::exchange(record->associations, nullptr));
    return;
  }
  if (association != &further.back()) std::swap(*association, further.back());
  removed = std::move(further.back());
  further.pop_back();
}

}  // namespace

void setAssociatedValue(NSObject& object, const void* key, Value value, AssociationPolicy policy) {
  if (value.isAbsent()) return removeKey(object, key);
  if (detail::ObjectAccess::isDying(object)) return;
  Association association{key, {}, {}};  // outlives the lock, then with the value that it replaced
  if (policy == AssociationPolicy::Assign && value.isObject()) {
    association.object = Weak<NSObject>(value.object());
  } else {
    association.value = std::move(value);
  }
  SideRecord& record = SideRecord::findOrMake(object);
  WordLock lock(record.mutex);
  if (!record.associations) {
    record.associations = new AssociationList{std::move(association), {}};
  } else if (Association* present = record.associations->find(key)) {
    std::swap(*present, association);
  } else {
    record.associations->further.push_back(std::move(association));
  }
}

Value associatedValue(const NSObject& object, const void* key) {
  SideRecord* record = SideRecord::find(object);
  if (!record) return {};
  Weak<NSObject> notKept;
  {
    WordLock lock(record->mutex);
    const Association* association = record->associations ? record->associations->find(key) : nullptr;
    if (!association) return {};
    if (!association->value.isAbsent()) return association->value;
    notKept = association->object;
  }
  return Value(notKept.lock());
}

void removeAssociatedValues(NSObject& object) {
  SideRecord* record = SideRecord::find(object);
  if (!record) return;
  std::unique_ptr<AssociationList> all;  // outlives the lock
  WordLock lock(record->mutex);
  all.reset(std::exchange(record->associations, nullptr));
}

void detail::releaseAssociations(AssociationList* associations) noexcept { delete associations; }

}  // namespace norvik
