// NorvikCore/platform/kernel/CopyTree.h - copies files and folders, with their permissions, times and attributes.
//
//   if (const int error = kernel::copyTree("/data/2024-25", "/archive/2024-25")) report(kernel::errorText(error));
#pragma once  // include time: <string> is a result type

#include "NorvikCore/platform/export.h"

#include <string>

namespace norvik::kernel {

/// Copies a file, a link (as such), or a folder with all that is in it to a place where nothing is yet, with
/// permissions, times of modification and attributes. 0 or an error number; what a failure has left at `to` is removed
/// again. A folder cannot be copied into itself (EINVAL), nor pipes, sockets and devices at all (ENOTSUP). Any thread.
[[nodiscard]] NK_EXPORT int copyTree(const std::string& from, const std::string& to);

}  // namespace norvik::kernel
