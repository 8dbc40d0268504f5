// NorvikCore/Categories/NSError+Norvik.h - the errors that the application reports to its user.
//
//   *error = validationErrorWithMessage("The NI number is not valid.", "It looks like QQ 12 34 56 C.");
//   try { run.calculate(); } catch (const NSException& e) { *error = errorWithMessage("The pay run failed.", e); }
//
// Each has code 0, a readable phrase as its domain, and three texts in its user info: the description for the user, the
// failure reason, and the recovery suggestion. Any thread.
#pragma once

#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSException.h"

#include <optional>

namespace norvik {

/// Domain "Application Validation Failure", failure reason "Input validation error". The description is the message, or
/// "A validation error has occurred"; the recovery suggestion is the info, or "".
[[nodiscard]] NK_EXPORT Ref<NSError> validationErrorWithMessage(const std::optional<NSString>& message,
                                                                const std::optional<NSString>& info = std::nullopt);

/// Domain and failure reason "Application Exception". The description is the message, the recovery suggestion the
/// exception's reason. An absent message raises NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Ref<NSError> errorWithMessage(const std::optional<NSString>& message,
                                                      const NSException& forException);

/// Domain "Application File Error", failure reason "File error". The description is the message, or "A file error has
/// occurred"; the recovery suggestion is the info, or "".
[[nodiscard]] NK_EXPORT Ref<NSError> fileErrorWithMessage(const std::optional<NSString>& message,
                                                          const std::optional<NSString>& info = std::nullopt);

}  // namespace norvik
