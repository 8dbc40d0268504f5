// NorvikCore/platform/keyvalue/internal/ObservedKey.h - cached information of a class about an observed key.
#pragma once

#include "NorvikCore/platform/object/Class.h"

#include <vector>

namespace norvik::detail {

/// Never freed, because there are at most as many as the keys that classes declare.
struct ObservedKey {
  const Class& theClass;
  const NSString key;
  const bool isProperty;
  const std::vector<NSString> affecting;  ///< all keys that affect this one, directly or through others
};

/// Null for a key that the class does not declare. Any thread; takes no lock if the key was requested recently.
[[nodiscard]] const ObservedKey* observedKey(const Class& theClass, const NSString& key);

}  // namespace norvik::detail
