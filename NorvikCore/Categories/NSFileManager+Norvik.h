// NorvikCore/Categories/NSFileManager+Norvik.h - a folder, or another one where it cannot be had.
//
//   NSFileManager& files = NSFileManager::defaultManager();
//   NSString exports = nk_createDirectoryAtPath(files, "/mnt/office/Exports", NSTemporaryDirectory());
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"

namespace norvik {

/// The path, where a folder is there or has been made now, with the missing ones above it. The fallback, which is
/// neither looked at nor made, where something else is at the path, where the folder cannot be made, and where the
/// manager raises an NSException; other exceptions pass. A link that leads to a folder is one, and one that leads
/// nowhere is in the way. Whether the folder can be written to is not asked. Any thread.
[[nodiscard]] NK_EXPORT NSString nk_createDirectoryAtPath(NSFileManager& manager, const NSString& path,
                                                          const NSString& withFallback);

}  // namespace norvik
