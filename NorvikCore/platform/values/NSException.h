// NorvikCore/platform/values/NSException.h - the platform's exception: a name that identifies its kind, and a reason
// for the reader.
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
// throw. The user info is a dictionary, and values do not depend on dictionaries: the functions that take or return one
// are defined beside NSDictionary, which their users include.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <exception>
#include <memory>  // the holder of the user info, whose type is incomplete in this header

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
  /// Additional information from the code that raised the exception; may be empty.
  [[nodiscard]] Ref<NSDictionary> userInfo() const noexcept;

  /// "name: reason".
  [[nodiscard]] const char* what() const noexcept override;
  [[nodiscard]] NSString description() const { return what_; }

 private:
  NSString name_, reason_, what_;
  std::shared_ptr<const Ref<NSDictionary>> userInfo_;
};

/// An invalid argument.
NK_EXPORT extern const NSString NSInvalidArgumentException;
/// An index or range out of bounds.
NK_EXPORT extern const NSString NSRangeException;
/// Errors without a name of their own, such as a collection that changed while it was enumerated.
NK_EXPORT extern const NSString NSGenericException;
/// A state that should be impossible.
NK_EXPORT extern const NSString NSInternalInconsistencyException;
/// A key that a class does not have. Its text is "NSUnknownKeyException".
NK_EXPORT extern const NSString NSUndefinedKeyException;
/// An operation that is not available.
NK_EXPORT extern const NSString NSObjectNotAvailableException;
/// A value that cannot be archived; an archive that is damaged or contains something else than was requested.
NK_EXPORT extern const NSString NSInvalidArchiveOperationException;
NK_EXPORT extern const NSString NSInvalidUnarchiveOperationException;
/// A failing file operation.
NK_EXPORT extern const NSString NSFileHandleOperationException;
/// Raised by Decimal's operations, as their NSDecimalNumberHandler requires.
NK_EXPORT extern const NSString NSDecimalNumberExactnessException;
NK_EXPORT extern const NSString NSDecimalNumberOverflowException;
NK_EXPORT extern const NSString NSDecimalNumberUnderflowException;
NK_EXPORT extern const NSString NSDecimalNumberDivideByZeroException;

}  // namespace norvik
