// NorvikCore/platform/keyvalue/internal/CollectionOperators.h - "@sum.grossPay" and the other operators in key paths.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik::detail {

[[nodiscard]] inline bool isOperator(const NSString& keyPath) { return keyPath.view().starts_with('@'); }

/// The result of the operator at the start of the path, applied to the elements.
[[nodiscard]] Value applyOperator(const NSArray& elements, const NSString& keyPath);

}  // namespace norvik::detail
