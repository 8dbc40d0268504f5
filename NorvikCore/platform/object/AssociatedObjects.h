// NorvikCore/platform/object/AssociatedObjects.h - values that other code attaches to an object, under keys of its own.
//
//   static const char controllerKey = 0;                          // its address is the key
//   setAssociatedValue(*view, &controllerKey, controller);
//   associatedValue(*view, &controllerKey).object<Controller>();
//
// An association ends with its object: its value is released just before the object's destructor runs. While an object
// is being destroyed, it has no associations and accepts no new ones. Any thread may call; each call is atomic for the
// others. Objects without associations cost nothing extra.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

enum class AssociationPolicy {
  Retain,  ///< retains an associated object
  Assign   ///< does not retain it: once that object is destroyed, the value is absent
};

/// An absent value removes the association.
NK_EXPORT void setAssociatedValue(NSObject& object, const void* key, Value value,
                                  AssociationPolicy policy = AssociationPolicy::Retain);
/// Absent if there is none.
[[nodiscard]] NK_EXPORT Value associatedValue(const NSObject& object, const void* key);
/// Removes all associations, including those of other code.
NK_EXPORT void removeAssociatedValues(NSObject& object);

}  // namespace norvik
