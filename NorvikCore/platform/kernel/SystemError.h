// NorvikCore/platform/kernel/SystemError.h - the error numbers that kernel/ answers with, and words for them.
//
// Operations that can fail answer 0 or an error number: errno's, and the one below that Linux has no number of its own
// for.
//
//   if (const int error = kernel::getAttribute(path, "payroll.locked", value)) report(kernel::errorText(error));
#pragma once  // include time: <string> is a result type

#include "NorvikCore/platform/export.h"

#include <string>

namespace norvik::kernel {

/// The file has no attribute of that name.
inline constexpr int attributeAbsent = 93;

/// A phrase in English, such as "No space left on device"; "Unknown error 4711" for a number nobody knows.
[[nodiscard]] NK_EXPORT std::string errorText(int error);

}  // namespace norvik::kernel
