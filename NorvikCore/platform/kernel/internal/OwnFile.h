// NorvikCore/platform/kernel/internal/OwnFile.h - files with a user's secrets, which no other user can read or replace.
//
// If a path leads through a folder that is writable by all users, such as /tmp, each folder, link and file below it
// must belong to this user or to root, because any user could have put it there.
//
// Operations return 0 or an error number (see SystemError.h). Any thread.
#pragma once

#include "NorvikCore/platform/kernel/FileStatus.h"

#include <cstddef>
#include <string>

namespace norvik::kernel {

struct OwnPath {
  std::string path;       ///< without links; parts that do not exist yet are at its end
  bool isShared = false;  ///< it leads through a folder that is writable by all users
  bool exists = false;    ///< `status` describes the file
  FileStatus status;
  std::string foreign;  ///< with EPERM: the folder, link or file that belongs to another user
};

/// Follows the links of a path that begins with '/'. EPERM if another user may have planted one of its parts.
[[nodiscard]] int resolveOwnPath(const std::string& path, OwnPath& result);

/// True if a file at the place that resolveOwnPath() found may be used.
[[nodiscard]] bool isTrusted(const FileStatus& status, bool isShared) noexcept;

/// Creates an empty file that only this user may read and write, from the beginning. EEXIST if anything exists there,
/// even a link. Opens no descriptor, because closing one would release the locks that this process holds on the file.
[[nodiscard]] int makeOwnFile(const std::string& path) noexcept;

/// Replaces `text` with the content of a regular file that the user or the system wrote; links are followed. EPERM for
/// a file that another user may have planted, EISDIR or ENXIO without waiting for anything but a regular file, EFBIG
/// for a file of more than `most` bytes; `text` is then empty.
[[nodiscard]] int readOwnFile(const std::string& path, std::size_t most, std::string& text);

/// Sets the lower nine bits of the mode; a link is not followed (ELOOP). Also opens no descriptor that affects locks.
[[nodiscard]] int setPermissionsOfFile(const std::string& path, unsigned permissions) noexcept;

/// 0 if this process may write to the file.
[[nodiscard]] int mayWrite(const std::string& path) noexcept;

}  // namespace norvik::kernel
