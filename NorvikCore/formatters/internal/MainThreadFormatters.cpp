#include "NorvikCore/formatters/internal/MainThreadFormatters.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"

namespace norvik::detail {

MainThreadFormatters& mainThreadFormatters() {
  return kernel::madeOnce([] { return new MainThreadFormatters; });
}

}  // namespace norvik::detail
