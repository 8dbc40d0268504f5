// Files that hold a user's secrets: found, made and kept so that no other user reads them or puts another file there.
//
// Where a path leads through a folder in which everybody may write, such as /tmp, each folder, link and file below it
// must belong to this user or to root, because anybody could have put it there.
//
// Operations answer 0 or an error number (see SystemError.h). Any thread.
#pragma once

#include "NorvikCore/platform/kernel/FileStatus.h"

#include <cstddef>
#include <string>

namespace norvik::kernel {

struct OwnPath {
  std::string path;       ///< without links; what does not exist yet is at its end
  bool isShared = false;  ///< it leads through a folder in which everybody may write
  bool exists = false;    ///< `status` says what is there
  FileStatus status;
  std::string foreign;  ///< with EPERM: the folder, link or file that belongs to another user
};

/// Follows the links of a path that begins with '/'. EPERM where one of its parts may be another user's trap.
[[nodiscard]] int resolveOwnPath(const std::string& path, OwnPath& result);

/// True where a file in the place that resolveOwnPath() found may be used.
[[nodiscard]] bool isTrusted(const FileStatus& status, bool isShared) noexcept;

/// Makes an empty file that only this user may read and write, from its first moment on. EEXIST where anything is
/// there, a link too. Opens no descriptor: to close one would drop the locks that this process holds on the file.
[[nodiscard]] int makeOwnFile(const std::string& path) noexcept;

/// Replaces `text` with the content of a regular file that the user or the system wrote, links followed. What may be
/// another user's trap gives EPERM, what is no regular file EISDIR or ENXIO without being waited for, and a file of
/// more than `most` bytes EFBIG; `text` is then empty.
[[nodiscard]] int readOwnFile(const std::string& path, std::size_t most, std::string& text);

/// Sets the lower nine bits of the mode; a link is not followed (ELOOP). Opens no descriptor that holds locks either.
[[nodiscard]] int setPermissionsOfFile(const std::string& path, unsigned permissions) noexcept;

/// 0 where this process may write to the file.
[[nodiscard]] int mayWrite(const std::string& path) noexcept;

}  // namespace norvik::kernel
