// NorvikCore/platform/object/internal/SharedName.h - the error text for looking up a name that several classes share.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <string>

namespace norvik::detail {

/// `2 classes are named "Row": hr::Row, pay::Row; give one of them another name by NK_CLASS_NAME`. Empty if only one
/// class has the name, or none.
[[nodiscard]] std::string sharedNameProblem(const NSString& name);

}  // namespace norvik::detail
