// NorvikCore/platform/collections/NSError.h - why an operation failed, for a caller that handles it and a user who
// reads it.
//
//   Ref<NSError> error;
//   if (!archive(payslip, path, &error)) NSLog("%@", error);
//
//   *error = NSError::errorWithDomain("Payroll", 7, NSDictionary::dictionaryWith(
//       {{NSLocalizedDescriptionKey, "The pay run is closed."},
//        {NSLocalizedRecoverySuggestionErrorKey, "Open it first."}}));
//   *error = NSError::posixError(errno, "open", path);   // "open /var/pay.csv: No such file or directory"
//
// An operation that can fail takes `Ref<NSError>* error = nullptr` last and writes to it only when it fails. Immutable,
// safe on any thread.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSError : public NSObject, public NSCoding {
  NK_OBJECT(NSError, NSObject)
  NK_DECODED_BY(errorWithCoder)

  NSError(NSString domain, std::int64_t code, Ref<NSDictionary> userInfo = nullptr);
  ~NSError() override;

  [[nodiscard]] static Ref<NSError> errorWithDomain(NSString domain, std::int64_t code,
                                                    Ref<NSDictionary> userInfo = nullptr);
  /// An error of the operating system: what failed, on what (such as a path; may be empty), and the system's number for
  /// why. Its description tells all three, its failure reason why; the user info has the path too.
  [[nodiscard]] static Ref<NSError> posixError(int number, const NSString& operation, const NSString& subject);

  /// Whose code it is.
  [[nodiscard]] const NSString& domain() const noexcept { return domain_; }
  [[nodiscard]] std::int64_t code() const noexcept { return code_; }
  /// Never empty, but possibly a dictionary without entries.
  [[nodiscard]] const Ref<NSDictionary>& userInfo() const noexcept { return userInfo_; }

  /// One sentence for the user: the user info's, otherwise made from domain, code and failure reason.
  [[nodiscard]] NSString localizedDescription() const;
  /// Absent where the user info has none.
  [[nodiscard]] std::optional<NSString> localizedFailureReason() const;
  [[nodiscard]] std::optional<NSString> localizedRecoverySuggestion() const;
  /// The error that caused this one; may be empty.
  [[nodiscard]] Ref<NSError> underlyingError() const;
  NK_METHOD(domain)
  NK_METHOD(code)
  NK_METHOD(localizedDescription)
  NK_METHOD(localizedFailureReason)
  NK_METHOD(localizedRecoverySuggestion)

  /// Equal domain, code and user info.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Domain, code and description in one line; the failure reason, suggestion and cause after it where there are any.
  [[nodiscard]] NSString description() const override;

  /// Its user info goes with it, so everything in that must be codable.
  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSError> errorWithCoder(NSCoder& coder);

 private:
  [[nodiscard]] std::optional<NSString> text(const NSString& key) const;

  NSString domain_;
  std::int64_t code_;
  Ref<NSDictionary> userInfo_;
};

/// The domain of the operating system's error numbers.
NK_EXPORT extern const NSString NSPOSIXErrorDomain;

// Keys of the user info.
NK_EXPORT extern const NSString NSLocalizedDescriptionKey;
NK_EXPORT extern const NSString NSLocalizedFailureReasonErrorKey;
NK_EXPORT extern const NSString NSLocalizedRecoverySuggestionErrorKey;
/// An NSError.
NK_EXPORT extern const NSString NSUnderlyingErrorKey;
/// The path that the failing operation was about.
NK_EXPORT extern const NSString NSFilePathErrorKey;

}  // namespace norvik
