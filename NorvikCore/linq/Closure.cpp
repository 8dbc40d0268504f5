#include "NorvikCore/linq/Closure.h"

#include "NorvikCore/platform/values/NSException.h"

#include <string>

namespace norvik::detail {

void raiseNoClosure(const char* operation) {
  NSException::raise(NSInvalidArgumentException, std::string(operation) + " needs a closure and was given none");
}

void checkSource(const NSObject* source) {
  if (!source) NSException::raise(NSInvalidArgumentException, "a chain of queries begins with an empty Ref");
}

}  // namespace norvik::detail
