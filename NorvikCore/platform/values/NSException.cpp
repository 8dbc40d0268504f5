#include "NorvikCore/platform/values/NSException.h"

#include <utility>

namespace norvik {

constexpr NSString NSInvalidArgumentException = "NSInvalidArgumentException";
constexpr NSString NSRangeException = "NSRangeException";
constexpr NSString NSGenericException = "NSGenericException";
constexpr NSString NSInternalInconsistencyException = "NSInternalInconsistencyException";
constexpr NSString NSUndefinedKeyException = "NSUnknownKeyException";
constexpr NSString NSObjectNotAvailableException = "NSObjectNotAvailableException";
constexpr NSString NSInvalidArchiveOperationException = "NSInvalidArchiveOperationException";
constexpr NSString NSInvalidUnarchiveOperationException = "NSInvalidUnarchiveOperationException";
constexpr NSString NSFileHandleOperationException = "NSFileHandleOperationException";
constexpr NSString NSDecimalNumberExactnessException = "NSDecimalNumberExactnessException";
constexpr NSString NSDecimalNumberOverflowException = "NSDecimalNumberOverflowException";
constexpr NSString NSDecimalNumberUnderflowException = "NSDecimalNumberUnderflowException";
constexpr NSString NSDecimalNumberDivideByZeroException = "NSDecimalNumberDivideByZeroException";

NSException::NSException(NSString name, NSString reason)
    : name_(std::move(name)), reason_(std::move(reason)), what_(NSString(name_.utf8() + ": " + reason_.utf8())) {}

NSException::NSException(const NSException&) noexcept = default;
NSException& NSException::operator=(const NSException&) noexcept = default;
NSException::~NSException() = default;

void NSException::raise(NSString name, NSString reason) { throw NSException(std::move(name), std::move(reason)); }

const char* NSException::what() const noexcept { return what_.view().data(); }

}  // namespace norvik
