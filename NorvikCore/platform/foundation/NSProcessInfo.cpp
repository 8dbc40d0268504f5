#include "NorvikCore/platform/foundation/NSProcessInfo.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/UUID.h"

#include <unistd.h>

#include <string_view>

namespace norvik {

NSProcessInfo::~NSProcessInfo() = default;

NSProcessInfo& NSProcessInfo::processInfo() {
  return kernel::madeOnce([] { return make<NSProcessInfo>().take(); });
}

NSString NSProcessInfo::processName() const { return kernel::processName(); }
std::int32_t NSProcessInfo::processIdentifier() const { return kernel::processId(); }
std::uint64_t NSProcessInfo::processorCount() const { return kernel::processorCount(); }

Ref<NSDictionary> NSProcessInfo::environment() const {
  const Ref<NSMutableDictionary> variables = make<NSMutableDictionary>();
  for (char** entry = environ; entry && *entry; ++entry) {
    const std::string_view text = *entry;
    const std::size_t equals = text.find('=');
    if (equals == text.npos || equals == 0) continue;
    const Value name = NSString(text.substr(0, equals));
    if (variables->objectForKey(name).isAbsent()) variables->setObject(NSString(text.substr(equals + 1)), name);
  }
  return variables->copy();
}

NSOperatingSystemVersion NSProcessInfo::operatingSystemVersion() const {
  const kernel::SystemVersion version = kernel::operatingSystemVersion();
  return {version.major, version.minor, version.patch};
}

NSString NSProcessInfo::operatingSystemVersionString() const { return kernel::operatingSystemVersionString(); }

NSString NSProcessInfo::globallyUniqueString() const {
  return kernel::makeUUID().text() + "-" + std::to_string(kernel::processId());
}

}  // namespace norvik
