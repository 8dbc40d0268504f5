#include "NorvikCore/platform/foundation/NSSearchPath.h"

#include "NorvikCore/platform/foundation/NSPathUtilities.h"
#include "NorvikCore/platform/kernel/Paths.h"

#include <string>
#include <vector>

namespace norvik {
namespace {

std::string userPath(NSSearchPathDirectory directory) {
  switch (directory) {
    case NSLibraryDirectory:
    case NSApplicationSupportDirectory:
      return kernel::libraryDirectory();
    case NSDocumentDirectory:
      return kernel::documentsDirectory();
    case NSDesktopDirectory:
      return kernel::desktopDirectory();
    case NSCachesDirectory:
      return kernel::cachesDirectory();
    case NSDownloadsDirectory:
      return kernel::downloadsDirectory();
    case NSUserDirectory:
      break;
  }
  return "";
}

std::string localPath(NSSearchPathDirectory directory) {
  switch (directory) {
    case NSLibraryDirectory:
    case NSApplicationSupportDirectory:
      return "/usr/local/share";
    case NSUserDirectory:
      return "/home";
    case NSCachesDirectory:
      return "/var/cache";
    default:
      return "";
  }
}

std::string systemPath(NSSearchPathDirectory directory) {
  return directory == NSLibraryDirectory || directory == NSApplicationSupportDirectory ? "/usr/share" : "";
}

}  // namespace

Ref<NSArray> NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory, NSSearchPathDomainMask domainMask,
                                                 bool expandTilde) {
  std::vector<Value> paths;
  const auto add = [&](NSSearchPathDomainMask domain, const NSString& path) {
    if ((domainMask & domain) != 0 && !path.empty()) paths.emplace_back(path);
  };
  const NSString user = NSString::fromBytes(userPath(directory));
  add(NSUserDomainMask, expandTilde ? user : stringByAbbreviatingWithTildeInPath(user));
  add(NSLocalDomainMask, localPath(directory));
  add(NSSystemDomainMask, systemPath(directory));
  return make<NSArray>(std::move(paths));
}

NSString NSHomeDirectory() { return NSString::fromBytes(kernel::homeDirectory()); }
NSString NSTemporaryDirectory() { return NSString::fromBytes(kernel::temporaryDirectory()); }

}  // namespace norvik
