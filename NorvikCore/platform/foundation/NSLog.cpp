#include "NorvikCore/platform/foundation/NSLog.h"

#include "NorvikCore/platform/kernel/SystemLog.h"

namespace norvik::detail {

void logFormatted(std::string_view format, FormatArguments arguments) {
  std::string text;
  appendFormatArguments(text, format, arguments);
  kernel::writeSystemLog(text);
}

}  // namespace norvik::detail
