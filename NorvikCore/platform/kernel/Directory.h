// NorvikCore/platform/kernel/Directory.h - creates, lists and removes folders.
//
//   std::string failedPath;
//   if (int error = kernel::createDirectories("/data/2024/april", 0700, &failedPath)) report(failedPath, error);
//
// Operations return 0 or an error number (see SystemError.h). Any thread.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"

#include <string>
#include <vector>

namespace norvik::kernel {

/// Creates a folder and the missing ones above it. Success for a folder that exists, also through a link, or that
/// another process creates meanwhile. On failure `*failedPath` (if given) is the folder that could not be created; the
/// ones above it stay. For a path longer than the system accepts (4095 bytes) none is created (ENAMETOOLONG).
[[nodiscard]] NK_EXPORT int createDirectories(const std::string& path, unsigned mode = 0777,
                                              std::string* failedPath = nullptr);

/// Creates a folder. Nothing may exist at `path`, and its parent must exist.
[[nodiscard]] NK_EXPORT int createDirectory(const std::string& path, unsigned mode = 0777) noexcept;

/// Checks that only this user and root may add entries to the folder: 0; ENOENT if nothing exists there; EPERM if it is
/// a folder of another user or one that others may write to, a link, or not a folder.
[[nodiscard]] NK_EXPORT int checkOwnDirectory(const std::string& path) noexcept;

/// Creates such a folder if nothing exists there; an existing one is checked. Others may not write to it, whatever
/// `mode` is. For a place in which all users may create folders, such as /tmp.
[[nodiscard]] NK_EXPORT int createOwnDirectory(const std::string& path, unsigned mode = 0700) noexcept;

/// The names of the entries, in the order of the file system, without "." and "..".
[[nodiscard]] NK_EXPORT int listDirectory(const std::string& path, std::vector<std::string>& names);

/// Removes a file, a link (not its target, even with a trailing '/'), or a folder with all its content to any depth,
/// and the attributes of the removed entry itself. Stops at the first entry that cannot be removed, and sets
/// `*failedPath` (if given) to it. "/" (EBUSY) and a path that ends with "." or ".." (EINVAL) are rejected before
/// anything is removed. A link that another process meanwhile puts in the place of a folder of the tree is not
/// followed.
[[nodiscard]] NK_EXPORT int removeTree(const std::string& path, std::string* failedPath = nullptr);

/// A new folder in the temporary folder, named `prefix` and six random characters, which only this user may enter.
[[nodiscard]] NK_EXPORT int makeTemporaryDirectory(const std::string& prefix, std::string& path);

}  // namespace norvik::kernel
