// NorvikCore/platform/foundation/NSSearchPath.h - where the folders of the user and of the machine are.
//
//   NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, true)->firstObject();
//   // "/home/pat/.local/share"
//
// The user's are those of the XDG conventions, as kernel/Paths.h finds them. Folders need not exist. Any thread, while
// nobody changes the environment.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik {

/// Kinds of folders, by the numbers that the platform gives them.
enum NSSearchPathDirectory : std::uint64_t {
  NSLibraryDirectory = 5,
  NSUserDirectory = 7,  ///< the folder of the users' home folders; not in the user's domain
  NSDocumentDirectory = 9,
  NSDesktopDirectory = 12,
  NSCachesDirectory = 13,
  NSApplicationSupportDirectory = 14,
  NSDownloadsDirectory = 15,
};
/// Whose folders: a sum of these.
enum NSSearchPathDomainMask : std::uint64_t {
  NSUserDomainMask = 1,     ///< the user's, as kernel/Paths.h finds them
  NSLocalDomainMask = 2,    ///< the machine's: /usr/local/share, /home, /var/cache
  NSNetworkDomainMask = 4,  ///< none
  NSSystemDomainMask = 8,   ///< the distribution's: /usr/share
  NSAllDomainsMask = 0x0FFFF,
};

[[nodiscard]] constexpr NSSearchPathDomainMask operator|(NSSearchPathDomainMask a, NSSearchPathDomainMask b) noexcept {
  return static_cast<NSSearchPathDomainMask>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}

/// The paths of that kind in those domains, the user's first; empty where there are none (the user's without a known
/// home), and for any other number. The library and application-support folders are the same. Without
/// `expandTilde` a path in the user's home folder begins with "~". Folders need not exist.
[[nodiscard]] NK_EXPORT Ref<NSArray> NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                                         NSSearchPathDomainMask domainMask,
                                                                         bool expandTilde);
/// As in kernel/Paths.h.
[[nodiscard]] NK_EXPORT NSString NSHomeDirectory();
[[nodiscard]] NK_EXPORT NSString NSTemporaryDirectory();

}  // namespace norvik
