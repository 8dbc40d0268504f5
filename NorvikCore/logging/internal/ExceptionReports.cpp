#include "NorvikCore/logging/internal/ExceptionReports.h"

#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik::detail {

void ExceptionReports::add(const NSException& exception) {
  if (count_.loadRelaxed() >= most) return;
  const std::int32_t before = count_.addRelaxed(1);
  if (before < most) NSLog("%s: %@", where_, exception);
  if (before == most - 1) NSLog("%s: Too many exceptions -- will not log any more of them.", where_);
}

}  // namespace norvik::detail
