// NorvikCore/platform/object/AssociatedObjects.h - values that others attach to an object, under keys of their own.
//
//   static const char controllerKey = 0;                          // its address is the key
//   setAssociatedValue(*view, &controllerKey, controller);
//   associatedValue(*view, &controllerKey).object<Controller>();
//
// An association ends with its object: what it kept is let go just before the object's destructor runs. While an object
// is going, it has no associations and takes no new ones. Any thread; each call is one step for the others. Objects
// without associations pay nothing.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

enum class AssociationPolicy {
  Retain,  ///< keeps an associated object
  Assign   ///< does not: once that object is gone, the value is absent
};

/// An absent value removes the association.
NK_EXPORT void setAssociatedValue(NSObject& object, const void* key, Value value,
                                  AssociationPolicy policy = AssociationPolicy::Retain);
/// Absent where there is none.
[[nodiscard]] NK_EXPORT Value associatedValue(const NSObject& object, const void* key);
/// All of them, whoever made them.
NK_EXPORT void removeAssociatedValues(NSObject& object);

}  // namespace norvik
