#include "NorvikCore/formatters/internal/MainThreadFormatters.h"

namespace norvik::detail {

MainThreadFormatters& mainThreadFormatters() {
  static auto& formatters = *new MainThreadFormatters;
  return formatters;
}

}  // namespace norvik::detail
