#include "NorvikCore/Categories/NSProcessInfo+Norvik.h"

#include "NorvikCore/logging/internal/LibraryWarning.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/OpenDescriptors.h"

#include <atomic>
#include <cerrno>
#include <string>
#include <vector>

namespace norvik {
namespace {

constexpr const char* fileName = "Categories/NSProcessInfo+Norvik";

/// Filled by the first call; concurrent first calls write the same numbers.
struct VersionCache {
  std::atomic<std::uint64_t> major{0}, minor{0}, patch{0};
  std::atomic<bool> isComputed{false};
};
constinit VersionCache versionCache;

/// The results of nk_validateOpenFileDescriptors.
enum : int { notListed = 0, allValid = 1, foundBad = 2, checkFailed = 3 };

int warnOfListing(const NSProcessInfo& info, int error, std::size_t listed) {
  constexpr const char* operation = "nk_validateOpenFileDescriptors:";
  if (error == ENOMEM) {
    constexpr std::size_t bytesOfOne = 8;
    detail::libraryWarning(fileName, operation, __LINE__,
                           "%@ : Out of memory. Unable to allocate buffer with %d bytes\n", NSString(operation),
                           (listed + 1) * bytesOfOne);
  } else {
    detail::libraryWarning(fileName, operation, __LINE__, "Unable to get open file handles for %d\n",
                           info.processIdentifier());
  }
  return notListed;
}

}  // namespace

NSOperatingSystemVersion nk_operatingSystemVersion() {
  VersionCache& cache = versionCache;
  if (!cache.isComputed.load(std::memory_order_acquire)) {
    const NSOperatingSystemVersion version = NSProcessInfo::processInfo().operatingSystemVersion();
    cache.major.store(version.majorVersion, std::memory_order_relaxed);
    cache.minor.store(version.minorVersion, std::memory_order_relaxed);
    cache.patch.store(version.patchVersion, std::memory_order_relaxed);
    cache.isComputed.store(true, std::memory_order_release);
  }
  return {cache.major.load(std::memory_order_relaxed), cache.minor.load(std::memory_order_relaxed),
          cache.patch.load(std::memory_order_relaxed)};
}

NSString nk_operatingSystemVersionString() {
  const NSOperatingSystemVersion version = nk_operatingSystemVersion();
  return stringWithFormat("%lu.%lu.%lu", version.majorVersion, version.minorVersion, version.patchVersion);
}

std::optional<NSString> nk_macHardwareModel(const NSProcessInfo&) {
  const std::string model = kernel::hardwareModel();
  return model.empty() ? std::nullopt : std::optional(NSString::fromBytes(model));
}

int nk_validateOpenFileDescriptors(const NSProcessInfo& info, const Ref<NSMutableDictionary>& files) {
  const kernel::DescriptorSource& source = kernel::descriptorSource();
  std::vector<int> numbers;
  if (const int error = source.list(numbers)) return warnOfListing(info, error, numbers.size());
  std::string path;
  for (const int number : numbers) {
    switch (kernel::checkDescriptor(source, number, path)) {
      case kernel::DescriptorState::valid:
        if (files) files->setObject(number, NSString::fromBytes(path));
        break;
      case kernel::DescriptorState::withoutPath:
      case kernel::DescriptorState::closed:
        break;
      case kernel::DescriptorState::bad:
        NSLog("Cannot get file descriptor info for : %s\n", path);
        return foundBad;
      case kernel::DescriptorState::failed:
        return checkFailed;
    }
  }
  return allValid;
}

}  // namespace norvik
