// NorvikCore/Categories/NSFileManager+Norvik.h - a folder, or a fallback if the folder cannot be created.
//
//   NSFileManager& files = NSFileManager::defaultManager();
//   NSString exports = nk_createDirectoryAtPath(files, "/mnt/office/Exports", NSTemporaryDirectory());
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"

namespace norvik {

/// The path if a folder is there, or if the folder and the missing folders above it could be created. If something
/// other than a folder has the path, if the folder cannot be created, or if the manager raises an NSException, the
/// result is the fallback, which is neither checked nor created. Other exceptions pass. A link that leads to a folder
/// counts as a folder; a link that leads nowhere does not. Does not check that the folder is writable. Any thread.
[[nodiscard]] NK_EXPORT NSString nk_createDirectoryAtPath(NSFileManager& manager, const NSString& path,
                                                          const NSString& withFallback);

}  // namespace norvik
