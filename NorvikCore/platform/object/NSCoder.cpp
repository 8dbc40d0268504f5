#include "NorvikCore/platform/object/NSCoder.h"

#include "NorvikCore/platform/values/NSException.h"

namespace norvik {

NSCoder::~NSCoder() = default;
NSCoding::~NSCoding() = default;

bool NSCoding::initWithCoder(NSCoder&) { return false; }

bool NSCoder::decodeBoolForKey(const NSString& key) { return decode<std::optional<bool>>(key).value_or(false); }
std::int64_t NSCoder::decodeIntegerForKey(const NSString& key) {
  return decode<std::optional<std::int64_t>>(key).value_or(0);
}
double NSCoder::decodeDoubleForKey(const NSString& key) { return decode<std::optional<double>>(key).value_or(0); }

void NSCoder::raiseWrongKind(const NSString& which) {
  try {
    throw;
  } catch (const NSException& e) {
    if (e.name() != NSInvalidArgumentException) throw;
    NSException::raise(NSInvalidUnarchiveOperationException, which + ": " + e.reason());
  }
}

}  // namespace norvik
