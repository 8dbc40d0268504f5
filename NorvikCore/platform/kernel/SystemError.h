// NorvikCore/platform/kernel/SystemError.h - the error numbers that kernel/ returns, and their texts.
//
// Operations that can fail return 0 or an error number: those of errno, and the one below, for which Linux has no
// number.
//
//   if (const int error = kernel::getAttribute(path, "payroll.locked", value)) report(kernel::errorText(error));
#pragma once  // include time: <string> is a result type

#include "NorvikCore/platform/export.h"

#include <string>

namespace norvik::kernel {

/// The file has no attribute of that name.
inline constexpr int attributeAbsent = 93;

/// A phrase in English, such as "No space left on device"; "Unknown error 4711" for an unknown number.
[[nodiscard]] NK_EXPORT std::string errorText(int error);

}  // namespace norvik::kernel
