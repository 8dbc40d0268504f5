#include "NorvikCore/platform/foundation/NSUUID.h"

#include "NorvikCore/platform/values/NSException.h"

#include <functional>

namespace norvik {

NSUUID::~NSUUID() = default;

Ref<NSUUID> NSUUID::UUID() { return make<NSUUID>(kernel::makeUUID()); }

Ref<NSUUID> NSUUID::initWithUUIDString(const NSString& text) {
  const auto uuid = kernel::parseUUID(text.view());
  return uuid ? make<NSUUID>(*uuid) : nullptr;
}

NSString NSUUID::UUIDString() const { return uuid_.text(); }

bool NSUUID::isEqual(const NSObject& other) const {
  const auto* uuid = dynamic_cast<const NSUUID*>(&other);
  return uuid && uuid->uuid_ == uuid_;
}

std::size_t NSUUID::hash() const { return std::hash<std::string>()(uuid_.text()); }

NSString NSUUID::description() const { return UUIDString(); }

void NSUUID::encodeWithCoder(NSCoder& coder) const { coder.encodeValue(UUIDString()); }

Ref<NSUUID> NSUUID::UUIDWithCoder(NSCoder& coder) {
  const auto uuid = initWithUUIDString(coder.decodeValue<NSString>());
  if (!uuid)
    NSException::raise(NSInvalidUnarchiveOperationException, "the text of a UUID does not have the form of one");
  return uuid;
}

}  // namespace norvik
