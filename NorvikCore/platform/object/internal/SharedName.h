// NorvikCore/platform/object/internal/SharedName.h - what is said where a name that several classes share is looked
// up.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <string>

namespace norvik::detail {

/// `2 classes are named "Row": hr::Row, pay::Row; NK_CLASS_NAME gives one of them another name`. Empty where the name
/// is that of one class, or of none.
[[nodiscard]] std::string sharedNameProblem(const NSString& name);

}  // namespace norvik::detail
