#include "NorvikCore/Categories/NSError+Norvik.h"

namespace norvik {
namespace {

Ref<NSError> applicationError(const NSString& domain, const Value& description, const NSString& failureReason,
                              const NSString& recoverySuggestion) {
  return NSError::errorWithDomain(
      domain, 0,
      NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, description},
                                    {NSLocalizedFailureReasonErrorKey, failureReason},
                                    {NSLocalizedRecoverySuggestionErrorKey, recoverySuggestion}}));
}

}  // namespace

Ref<NSError> validationErrorWithMessage(const std::optional<NSString>& message, const std::optional<NSString>& info) {
  return applicationError("Application Validation Failure"_ns, message.value_or("A validation error has occurred"_ns),
                          "Input validation error"_ns, info.value_or(""_ns));
}

Ref<NSError> errorWithMessage(const std::optional<NSString>& message, const NSException& forException) {
  return applicationError("Application Exception"_ns, message, "Application Exception"_ns, forException.reason());
}

Ref<NSError> fileErrorWithMessage(const std::optional<NSString>& message, const std::optional<NSString>& info) {
  return applicationError("Application File Error"_ns, message.value_or("A file error has occurred"_ns),
                          "File error"_ns, info.value_or(""_ns));
}

}  // namespace norvik
