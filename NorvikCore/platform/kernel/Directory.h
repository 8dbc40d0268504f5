// NorvikCore/platform/kernel/Directory.h - folders: make, list, remove.
//
// Operations answer 0 or an error number (see SystemError.h). Any thread.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"

#include <string>
#include <vector>

namespace norvik::kernel {

/// Makes a folder and the missing ones above it. One that is there, also by a link, or that somebody else makes
/// meanwhile is success. When it fails, `*failedPath` (if given) is the folder that could not be made; those above it
/// stay. A path that is longer than the system takes one (4095 bytes) makes none (ENAMETOOLONG).
[[nodiscard]] NK_EXPORT int createDirectories(const std::string& path, unsigned mode = 0777,
                                              std::string* failedPath = nullptr);

/// Makes a folder where nothing is yet and its parent exists.
[[nodiscard]] NK_EXPORT int createDirectory(const std::string& path, unsigned mode = 0777) noexcept;

/// Whether only this user and root may put anything into the folder of that name: 0, ENOENT where nothing is
/// there, EPERM where it is a folder of another user, one that others may write to, a link, or no folder.
[[nodiscard]] NK_EXPORT int checkOwnDirectory(const std::string& path) noexcept;

/// Makes such a folder where nothing is yet; one that is there is checked. Others may not write to it whatever `mode`
/// says. For a place where everybody may make folders, such as /tmp.
[[nodiscard]] NK_EXPORT int createOwnDirectory(const std::string& path, unsigned mode = 0700) noexcept;

/// The names of the entries, in the order of the file system, without "." and "..".
[[nodiscard]] NK_EXPORT int listDirectory(const std::string& path, std::vector<std::string>& names);

/// Removes a file, a link (not what it points to, also with '/' behind it), or a folder with all that is in it, however
/// deep, and the attributes of the thing itself. Stops at the first thing that cannot be removed, and `*failedPath` (if
/// given) is that. "/" (EBUSY) and a path that ends with "." or ".." (EINVAL) are refused before anything is removed. A
/// link that another process puts in the place of a folder of the tree meanwhile is not followed.
[[nodiscard]] NK_EXPORT int removeTree(const std::string& path, std::string* failedPath = nullptr);

/// A new folder in the temporary folder, named `prefix` and six random characters, which only this user may enter.
[[nodiscard]] NK_EXPORT int makeTemporaryDirectory(const std::string& prefix, std::string& path);

}  // namespace norvik::kernel
