// NorvikCore/platform/keyvalue/internal/KeyPathText.h - splits the text of a key path at its full stops.
//
// A path of more than 1,000 keys raises NSInvalidArgumentException, because each key uses some of the stack.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <optional>
#include <vector>

namespace norvik::detail {

/// The first key of a path and the rest of the path, which is absent if there is only one key. If a path ends with a
/// full stop, its last key is the empty key, which no object has.
struct FirstKey {
  NSString key;
  std::optional<NSString> rest;
};
[[nodiscard]] FirstKey firstKey(const NSString& keyPath);

/// The last key of a path and the path before it, which is absent if there is only one key.
struct LastKey {
  std::optional<NSString> before;
  NSString key;
};
[[nodiscard]] LastKey lastKey(const NSString& keyPath);

/// All keys; at least one.
[[nodiscard]] std::vector<NSString> allKeys(const NSString& keyPath);

}  // namespace norvik::detail
