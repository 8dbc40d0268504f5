#include "NorvikCore/platform/object/AssociatedObjects.h"

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>
#include <vector>

namespace norvik {
namespace {

struct Association {
  const void* key;
  Value value;            ///< absent for an object that is not kept
  Weak<NSObject> object;  ///< of an object that is not kept
};

using Associations = std::vector<Association>;

/// The associations of some objects, by address. Values are let go only outside the lock, since an object that goes may
/// call back.
struct Stripe {
  Mutex mutex;
  std::unordered_map<const NSObject*, Associations> byObject NK_GUARDED_BY(mutex);
};

Stripe& stripeOf(const NSObject& object) {
  static auto& stripes = *new std::array<Stripe, 64>;
  return stripes[(reinterpret_cast<std::uintptr_t>(&object) >> 5) % stripes.size()];
}

Associations::iterator findKey(Associations& associations, const void* key) {
  return std::ranges::find(associations, key, &Association::key);
}

Associations takeAll(const NSObject& object) {
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  auto node = stripe.byObject.extract(&object);
  return node ? std::move(node.mapped()) : Associations();
}

void removeKey(const NSObject& object, const void* key) {
  Association removed;  // outlives the lock
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  const auto found = stripe.byObject.find(&object);
  if (found == stripe.byObject.end()) return;
  const auto association = findKey(found->second, key);
  if (association == found->second.end()) return;
  removed = std::move(*association);
  found->second.erase(association);
  if (found->second.empty()) stripe.byObject.erase(found);
}

}  // namespace

void setAssociatedValue(NSObject& object, const void* key, Value value, AssociationPolicy policy) {
  if (value.isAbsent()) return removeKey(object, key);
  if (detail::ObjectAccess::isDying(object)) return;
  Association association{key, {}, {}};  // outlives the lock, then with what it replaced
  if (policy == AssociationPolicy::Assign && value.isObject()) {
    association.object = Weak<NSObject>(value.object());
  } else {
    association.value = std::move(value);
  }
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  Associations& associations = stripe.byObject[&object];
  detail::ObjectAccess::setHasAssociated(object);
  if (const auto present = findKey(associations, key); present != associations.end()) {
    std::swap(*present, association);
  } else {
    associations.push_back(std::move(association));
  }
}

Value associatedValue(const NSObject& object, const void* key) {
  if (!detail::ObjectAccess::hasAssociated(object)) return {};
  Stripe& stripe = stripeOf(object);
  MutexLock lock(stripe.mutex);
  const auto found = stripe.byObject.find(&object);
  if (found == stripe.byObject.end()) return {};
  const auto association = findKey(found->second, key);
  if (association == found->second.end()) return {};
  return association->value.isAbsent() ? Value(association->object.lock()) : association->value;
}

void removeAssociatedValues(NSObject& object) { takeAll(object); }

void detail::forgetAssociated(const NSObject* object) noexcept { takeAll(*object); }

}  // namespace norvik
