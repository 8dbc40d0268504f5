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

/// The version of the distribution: "12" has the numbers 12, 0 and 0.
struct NSOperatingSystemVersion {
  std::uint64_t majorVersion = 0, minorVersion = 0, patchVersion = 0;
};

class NK_EXPORT NSProcessInfo : public NSObject {
  NK_OBJECT(NSProcessInfo, NSObject)

  NSProcessInfo() = default;
  ~NSProcessInfo() override;

  [[nodiscard]] static NSProcessInfo& processInfo();

  /// The last part of the path by which the program was started.
  [[nodiscard]] NSString processName() const;
  [[nodiscard]] std::int32_t processIdentifier() const;
  /// Configured processors, at least 1.
  [[nodiscard]] std::uint64_t processorCount() const;
  /// The variables and their present values; if a variable occurs twice, the first one.
  [[nodiscard]] Ref<NSDictionary> environment() const;
  /// The version of the distribution, or of the kernel if the distribution has no number.
  [[nodiscard]] NSOperatingSystemVersion operatingSystemVersion() const;
  [[nodiscard]] NSString operatingSystemVersionString() const;
  /// A text that is unique among all processes and calls.
  [[nodiscard]] NSString globallyUniqueString() const;

  NK_METHOD(processName)
  NK_METHOD(processIdentifier)
  NK_METHOD(processorCount)
  NK_METHOD(environment)
  NK_METHOD(operatingSystemVersionString)
  NK_METHOD(globallyUniqueString)
};

}  // namespace norvik
