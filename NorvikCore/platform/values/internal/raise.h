// NorvikCore/platform/values/internal/raise.h - how the levels below the runtime raise the platform's exception.
#pragma once

#include "NorvikCore/platform/export.h"

#include <string>

namespace norvik::detail {

/// Throws the NSException of that name. It is defined beside NSException, in runtime/: an exception carries a
/// dictionary, which values and queues know nothing of.
[[noreturn]] NK_EXPORT void raise(const char* name, std::string reason);

}  // namespace norvik::detail
