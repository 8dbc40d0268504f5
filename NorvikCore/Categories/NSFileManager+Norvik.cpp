#include "NorvikCore/Categories/NSFileManager+Norvik.h"

#include "NorvikCore/platform/values/NSException.h"

namespace norvik {

NSString nk_createDirectoryAtPath(NSFileManager& manager, const NSString& path, const NSString& withFallback) {
  try {
    bool isFolder = false;
    if (manager.fileExistsAtPath(path, &isFolder)) return isFolder ? path : withFallback;
    return manager.createDirectoryAtPath(path, true, nullptr) ? path : withFallback;
  } catch (const NSException&) {
    return withFallback;
  }
}

}  // namespace norvik
