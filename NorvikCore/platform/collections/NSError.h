// NorvikCore/platform/collections/NSError.h - the reason why an operation failed, for the caller that handles it and
// for the user.
//
//   Ref<NSError> error;
//   if (!archive(payslip, path, &error)) NSLog("%@", error);
//
//   *error = NSError::errorWithDomain("Payroll", 7, NSDictionary::dictionaryWith(
//       {{NSLocalizedDescriptionKey, "The pay run is closed."},
//        {NSLocalizedRecoverySuggestionErrorKey, "Open it first."}}));
//   *error = NSError::posixError(errno, "open", path);   // "open /var/pay.csv: No such file or directory"
//
// An operation that can fail takes `Ref<NSError>* error = nullptr` as its last parameter and writes to it only on
// failure. Immutable, safe on any thread.
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
  /// An error of the operating system: the operation that failed, its subject (such as a path; may be empty), and the
  /// system's error number. The description contains all three, the failure reason only the text of the number. The
  /// user info also contains the path.
  [[nodiscard]] static Ref<NSError> posixError(int number, const NSString& operation, const NSString& subject);

  /// The part of the software that defines the code.
  [[nodiscard]] const NSString& domain() const noexcept { return domain_; }
  [[nodiscard]] std::int64_t code() const noexcept { return code_; }
  /// Never an empty Ref, but possibly a dictionary without entries.
  [[nodiscard]] const Ref<NSDictionary>& userInfo() const noexcept { return userInfo_; }

  /// One sentence for the user: from the user info, otherwise made from domain, code and failure reason.
  [[nodiscard]] NSString localizedDescription() const;
  /// Both are absent if the user info does not contain them.
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
  /// Domain, code and description in one line, followed by failure reason, suggestion and cause if they exist.
  [[nodiscard]] NSString description() const override;

  /// The user info is encoded too, so each value in it must be one that can be archived.
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
/// The path that the failed operation concerned.
NK_EXPORT extern const NSString NSFilePathErrorKey;

}  // namespace norvik
