#include "NorvikCore/platform/runtime/internal/ObjectAccess.h"

namespace norvik::detail {

void forgetAssociated(const NSObject*) noexcept {}

}  // namespace norvik::detail
