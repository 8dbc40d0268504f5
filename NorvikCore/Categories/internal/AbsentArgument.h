// NorvikCore/Categories/internal/AbsentArgument.h - the warning of a comparison with an absent argument.
#pragma once

namespace norvik::detail {

/// Logs "Argument for <class> -compare: is nil. ..." with the call stack if the library's level admits warnings. `file`
/// and `operation` are literals. The caller then continues with the comparison.
void warnOfAbsentArgument(const char* className, const char* file, const char* operation, int line);

}  // namespace norvik::detail
