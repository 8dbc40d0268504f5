#include "NorvikCore/Categories/internal/AbsentArgument.h"

#include "NorvikCore/logging/internal/LibraryWarning.h"
#include "NorvikCore/platform/kernel/CallStack.h"

#include <string>

namespace norvik::detail {
namespace {

/// The frames as a list in parentheses, one per line.
std::string listOf(const std::vector<std::string>& frames) {
  std::string list = "(\n";
  for (std::size_t i = 0; i < frames.size(); ++i) list += "    " + frames[i] + (i + 1 < frames.size() ? ",\n" : "\n");
  return list + ")";
}

}  // namespace

void warnOfAbsentArgument(const char* className, const char* file, const char* operation, int line) {
  if (!libraryWarnings()) return;
  libraryWarning(file, operation, line, "Argument for %s -compare: is nil. Comparison result is undefined.\n%@\n",
                 className, NSString(listOf(kernel::callStackSymbols(1))));
}

}  // namespace norvik::detail
