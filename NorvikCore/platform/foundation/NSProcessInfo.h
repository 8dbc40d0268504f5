// NorvikCore/platform/foundation/NSProcessInfo.h - this process and the system it runs on.
//
//   NSProcessInfo& info = NSProcessInfo::processInfo();
//   NSLog("%@ (%d) on %@", info.processName(), info.processIdentifier(), info.operatingSystemVersionString());
//
// One object for the process; any thread.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik {

struct NSOperatingSystemVersion {
  std::uint64_t majorVersion = 0, minorVersion = 0, patchVersion = 0;
};

class NK_EXPORT NSProcessInfo : public NSObject {
  NK_OBJECT(NSProcessInfo, NSObject)

  NSProcessInfo() = default;
  ~NSProcessInfo() override;

  [[nodiscard]] static NSProcessInfo& processInfo();

  /// The last part of the path the program was started by.
  [[nodiscard]] NSString processName() const;
  [[nodiscard]] std::int32_t processIdentifier() const;
  /// Configured processors, at least 1.
  [[nodiscard]] std::uint64_t processorCount() const;
  /// The variables and their values at this moment, of a variable that is there twice the first.
  [[nodiscard]] Ref<NSDictionary> environment() const;
  /// Of the distribution, or of the kernel where the distribution has no number.
  [[nodiscard]] NSOperatingSystemVersion operatingSystemVersion() const;
  [[nodiscard]] NSString operatingSystemVersionString() const;
  /// A text that no other process and no other call gives.
  [[nodiscard]] NSString globallyUniqueString() const;

  NK_METHOD(processName)
  NK_METHOD(processIdentifier)
  NK_METHOD(processorCount)
  NK_METHOD(environment)
  NK_METHOD(operatingSystemVersionString)
  NK_METHOD(globallyUniqueString)
};

}  // namespace norvik
