// NorvikCore/Categories/internal/AbsentArgument.h - the warning of a comparison with nothing.
#pragma once

namespace norvik::detail {

/// Logs "Argument for <class> -compare: is nil. ..." with the call stack, if the library's level admits warnings.
/// `file` and `operation` are literals, and the caller goes on with the comparison.
void warnOfAbsentArgument(const char* className, const char* file, const char* operation, int line);

}  // namespace norvik::detail
