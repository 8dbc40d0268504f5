// NorvikCore/platform/values/NSException.h - the platform's exception: a name to tell kinds apart and a reason to
// read.
//
//   try {
//     payslips->objectAtIndex(12);
//   } catch (const NSException& e) {
//     if (e.name() != NSRangeException) throw;
//     NSLog("%@", e.reason());
//   }
//   NSException::raise(NSInvalidArgumentException, "the payment date is before the start of the tax year");
//
// A std::exception like any other: thrown by value, caught by reference. A value: copies share their texts and never
// throw. The user info is a dictionary, of which values know nothing: what takes or gives one is defined beside
// NSDictionary, which its users include.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <exception>
#include <memory>  // the holder of the user info, whose type is not complete at this level

namespace norvik {

class NSDictionary;
template <class T>
class Ref;

class NK_EXPORT NSException : public std::exception {
 public:
  NSException(NSString name, NSString reason);
  NSException(NSString name, NSString reason, const Ref<NSDictionary>& userInfo);
  NSException(const NSException&) noexcept;
  NSException& operator=(const NSException&) noexcept;
  ~NSException() override;

  [[noreturn]] static void raise(NSString name, NSString reason);
  [[noreturn]] static void raise(NSString name, NSString reason, const Ref<NSDictionary>& userInfo);

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  [[nodiscard]] const NSString& reason() const noexcept { return reason_; }
  /// What else the code that raised wanted to tell; may be empty.
  [[nodiscard]] Ref<NSDictionary> userInfo() const noexcept;

  /// "name: reason".
  [[nodiscard]] const char* what() const noexcept override;
  [[nodiscard]] NSString description() const { return what_; }

 private:
  NSString name_, reason_, what_;
  std::shared_ptr<const Ref<NSDictionary>> userInfo_;
};

/// An argument that makes no sense.
NK_EXPORT extern const NSString NSInvalidArgumentException;
/// An index or range outside of what there is.
NK_EXPORT extern const NSString NSRangeException;
/// Whatever has no name of its own, such as a collection that changed while it was enumerated.
NK_EXPORT extern const NSString NSGenericException;
/// A state that the code holds impossible.
NK_EXPORT extern const NSString NSInternalInconsistencyException;
/// A key that a class does not have. Its text is "NSUnknownKeyException".
NK_EXPORT extern const NSString NSUndefinedKeyException;
/// An operation that is not there.
NK_EXPORT extern const NSString NSObjectNotAvailableException;
/// Something that cannot be put into an archive, and an archive that is damaged or holds something else than asked for.
NK_EXPORT extern const NSString NSInvalidArchiveOperationException;
NK_EXPORT extern const NSString NSInvalidUnarchiveOperationException;
/// A failing file operation.
NK_EXPORT extern const NSString NSFileHandleOperationException;
/// What Decimal's operations raise, as their NSDecimalNumberHandler asks.
NK_EXPORT extern const NSString NSDecimalNumberExactnessException;
NK_EXPORT extern const NSString NSDecimalNumberOverflowException;
NK_EXPORT extern const NSString NSDecimalNumberUnderflowException;
NK_EXPORT extern const NSString NSDecimalNumberDivideByZeroException;

}  // namespace norvik
