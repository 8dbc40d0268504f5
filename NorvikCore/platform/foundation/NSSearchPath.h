// NorvikCore/platform/foundation/NSSearchPath.h - the locations of folders of the user and of the machine.
//
//   NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, true)->firstObject();
//   // "/home/pat/.local/share"
//
// The user's folders are those of the XDG conventions, as kernel/Paths.h determines them. Folders need not exist. Any
// thread, as long as no thread changes the environment.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik {

/// Kinds of folders; the numbers are those of the platform.
enum NSSearchPathDirectory : std::uint64_t {
  NSLibraryDirectory = 5,
  NSUserDirectory = 7,  ///< the folder of the users' home folders; not in the user's domain
  NSDocumentDirectory = 9,
  NSDesktopDirectory = 12,
  NSCachesDirectory = 13,
  NSApplicationSupportDirectory = 14,
  NSDownloadsDirectory = 15,
};
/// The owner of the folders. Values may be combined by `|`.
enum NSSearchPathDomainMask : std::uint64_t {
  NSUserDomainMask = 1,     ///< the user's, as kernel/Paths.h determines them
  NSLocalDomainMask = 2,    ///< the machine's: /usr/local/share, /home, /var/cache
  NSNetworkDomainMask = 4,  ///< none
  NSSystemDomainMask = 8,   ///< the distribution's: /usr/share
  NSAllDomainsMask = 0x0FFFF,
};

[[nodiscard]] constexpr NSSearchPathDomainMask operator|(NSSearchPathDomainMask a, NSSearchPathDomainMask b) noexcept {
  return static_cast<NSSearchPathDomainMask>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}

/// The paths of folders of that kind in those domains, the user's first. Empty if there are none (also the user's if
/// the home folder is unknown) and for any other number. The library and application-support folders are the same. If
/// `expandTilde` is false, a path in the user's home folder begins with "~". Folders need not exist.
[[nodiscard]] NK_EXPORT Ref<NSArray> NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                                         NSSearchPathDomainMask domainMask,
                                                                         bool expandTilde);
/// As in kernel/Paths.h.
[[nodiscard]] NK_EXPORT NSString NSHomeDirectory();
[[nodiscard]] NK_EXPORT NSString NSTemporaryDirectory();

}  // namespace norvik
