// NorvikCore/platform/keyvalue/internal/KeyPathText.h - how the text of a key path is cut at its full stops.
//
// A path of more than 1,000 keys raises NSInvalidArgumentException, because every key on the way takes a part of the
// stack.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <optional>
#include <vector>

namespace norvik::detail {

/// The first key of a path and the path behind it, absent where there is one key only. A path that ends with a
/// full stop has the empty key as its last one, which no object has.
struct FirstKey {
  NSString key;
  std::optional<NSString> rest;
};
[[nodiscard]] FirstKey firstKey(const NSString& keyPath);

/// The last key of a path and the path before it, absent where there is one key only.
struct LastKey {
  std::optional<NSString> before;
  NSString key;
};
[[nodiscard]] LastKey lastKey(const NSString& keyPath);

/// All keys; at least one.
[[nodiscard]] std::vector<NSString> allKeys(const NSString& keyPath);

}  // namespace norvik::detail
