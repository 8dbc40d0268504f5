#include "NorvikCore/platform/foundation/internal/SharedLibrary.h"

#include "NorvikCore/platform/values/NSException.h"

#include <dlfcn.h>

namespace norvik::detail {
namespace {

[[noreturn]] void raiseMissing(const char* name, const char* purpose) {
  const char* const reason = ::dlerror();
  NSException::raise(NSGenericException, NSString(purpose) + ": " + (reason ? reason : name));
}

}  // namespace

SharedLibrary::SharedLibrary(const char* name, const char* purpose)
    : name_(name), purpose_(purpose), library_(::dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
  if (!library_) raiseMissing(name_, purpose_);
}

void* SharedLibrary::address(const char* name) const {
  void* const found = ::dlsym(library_, name);
  if (!found) raiseMissing(name_, purpose_);
  return found;
}

}  // namespace norvik::detail
