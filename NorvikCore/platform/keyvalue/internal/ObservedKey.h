// NorvikCore/platform/keyvalue/internal/ObservedKey.h - what a class says of a key that is observed, found quickly.
#pragma once

#include "NorvikCore/platform/object/Class.h"

#include <vector>

namespace norvik::detail {

/// Kept for good: there are as many as the classes state.
struct ObservedKey {
  const Class& theClass;
  const NSString key;
  const bool isProperty;
  const std::vector<NSString> affecting;  ///< all keys whose change changes this one, directly or through others
};

/// Null for a key of which the class states nothing. Any thread; takes no lock where the key was asked for lately.
[[nodiscard]] const ObservedKey* observedKey(const Class& theClass, const NSString& key);

}  // namespace norvik::detail
