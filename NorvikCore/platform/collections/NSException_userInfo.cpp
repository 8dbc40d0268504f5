// The functions of NSException that use a dictionary. They are here because values/ does not know dictionaries.
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/values/NSException.h"

#include <utility>

namespace norvik {

NSException::NSException(NSString name, NSString reason, const Ref<NSDictionary>& userInfo)
    : NSException(std::move(name), std::move(reason)) {
  if (userInfo) userInfo_ = std::make_shared<const Ref<NSDictionary>>(userInfo);
}

void NSException::raise(NSString name, NSString reason, const Ref<NSDictionary>& userInfo) {
  throw NSException(std::move(name), std::move(reason), userInfo);
}

Ref<NSDictionary> NSException::userInfo() const noexcept { return userInfo_ ? *userInfo_ : nullptr; }

}  // namespace norvik
