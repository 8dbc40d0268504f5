#include "NorvikCore/platform/collections/NSError.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

#include <array>
#include <cstring>
#include <utility>

namespace norvik {

constexpr NSString NSPOSIXErrorDomain = "NSPOSIXErrorDomain";
constexpr NSString NSLocalizedDescriptionKey = "NSLocalizedDescription";
constexpr NSString NSLocalizedFailureReasonErrorKey = "NSLocalizedFailureReason";
constexpr NSString NSLocalizedRecoverySuggestionErrorKey = "NSLocalizedRecoverySuggestion";
constexpr NSString NSUnderlyingErrorKey = "NSUnderlyingError";
constexpr NSString NSFilePathErrorKey = "NSFilePath";

NSError::NSError(NSString domain, std::int64_t code, Ref<NSDictionary> userInfo)
    : domain_(std::move(domain)), code_(code), userInfo_(userInfo ? userInfo->copy() : NSDictionary::dictionary()) {}

NSError::~NSError() = default;

Ref<NSError> NSError::errorWithDomain(NSString domain, std::int64_t code, Ref<NSDictionary> userInfo) {
  return make<NSError>(std::move(domain), code, std::move(userInfo));
}

Ref<NSError> NSError::posixError(int number, const NSString& operation, const NSString& subject) {
  std::array<char, 128> buffer{};
  const NSString why = strerror_r(number, buffer.data(), buffer.size());
  const NSString what = subject.empty() ? operation : operation + " " + subject;
  auto userInfo = NSMutableDictionary::dictionaryWith(
      {{NSLocalizedDescriptionKey, what + ": " + why}, {NSLocalizedFailureReasonErrorKey, why}});
  if (!subject.empty()) userInfo->setObject(subject, NSFilePathErrorKey);
  return errorWithDomain(NSPOSIXErrorDomain, number, userInfo);
}

NSString NSError::localizedDescription() const {
  if (auto description = text(NSLocalizedDescriptionKey)) return *description;
  const NSString intro = "The operation could not be completed. ";
  if (auto reason = localizedFailureReason()) return intro + *reason;
  return intro + "(" + domain_ + " error " + std::to_string(code_) + ".)";
}

std::optional<NSString> NSError::localizedFailureReason() const { return text(NSLocalizedFailureReasonErrorKey); }

std::optional<NSString> NSError::localizedRecoverySuggestion() const {
  return text(NSLocalizedRecoverySuggestionErrorKey);
}

Ref<NSError> NSError::underlyingError() const {
  return Ref<NSError>(userInfo_->objectForKey(NSUnderlyingErrorKey).object<NSError>());
}

bool NSError::isEqual(const NSObject& other) const {
  const auto* error = dynamic_cast<const NSError*>(&other);
  return error && code_ == error->code_ && domain_ == error->domain_ && userInfo_->isEqual(*error->userInfo_);
}

std::size_t NSError::hash() const { return std::hash<NSString>()(domain_) * 31 + static_cast<std::size_t>(code_); }

NSString NSError::description() const {
  NSString description = domain_ + " error " + std::to_string(code_) + ": " + localizedDescription();
  const auto append = [&](const NSString& what) {
    if (!description.containsString(what)) description = description + " " + what;
  };
  if (auto reason = localizedFailureReason()) append(*reason);
  if (auto suggestion = localizedRecoverySuggestion()) append(*suggestion);
  if (const Ref<NSError> cause = underlyingError()) description = description + " (" + cause->description() + ")";
  return description;
}

std::optional<NSString> NSError::text(const NSString& key) const {
  const Value* found = userInfo_->find(key);
  if (!found || !found->isString()) return std::nullopt;
  return *found->string();
}

void NSError::encodeWithCoder(NSCoder& coder) const {
  coder.encodeObject(domain_, "domain");
  coder.encodeInteger(code_, "code");
  coder.encodeObject(userInfo_, "userInfo");
}

Ref<NSError> NSError::errorWithCoder(NSCoder& coder) {
  return make<NSError>(coder.decode<NSString>("domain"), coder.decode<std::int64_t>("code"),
                       coder.decode<Ref<NSDictionary>>("userInfo"));
}

}  // namespace norvik
