// NorvikCore/platform/kernel/CopyTree.h - copies files and folders, with their permissions, times and attributes.
//
//   if (const int error = kernel::copyTree("/data/2024-25", "/archive/2024-25")) report(kernel::errorText(error));
#pragma once  // include time: <string> is a result type

#include "NorvikCore/platform/export.h"

#include <string>

namespace norvik::kernel {

/// Copies a file, a link (as a link), or a folder with all its content, with permissions, times of modification and
/// attributes. Nothing may exist at `to`. 0 or an error number; after a failure the incomplete copy is removed. A
/// folder cannot be copied into itself (EINVAL); pipes, sockets and devices cannot be copied (ENOTSUP). Any thread.
[[nodiscard]] NK_EXPORT int copyTree(const std::string& from, const std::string& to);

}  // namespace norvik::kernel
