// NorvikCore/platform/keyvalue/internal/CollectionOperators.h - "@sum.grossPay" and the other operators of key paths.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik::detail {

[[nodiscard]] inline bool isOperator(const NSString& keyPath) { return keyPath.view().starts_with('@'); }

/// What the operator at the path's start gives over the elements.
[[nodiscard]] Value applyOperator(const NSArray& elements, const NSString& keyPath);

}  // namespace norvik::detail
