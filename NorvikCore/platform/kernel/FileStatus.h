// NorvikCore/platform/kernel/FileStatus.h - kind, size, owner and times of a file, including its creation.
//
//   kernel::FileStatus status;
//   if (int error = kernel::readFileStatus(path, status)) return error;
//   status.creation;      // nanoseconds since 1970; writes, renames and changed attributes do not affect it
//
// The creation time is the file system's birth time. If the file system has none (ramfs, some network disks), it is the
// time that noteCreation() stored as an attribute when the file was created. Without that it is the earlier of the
// times of the last write and the last change: the best approximation, although both advance when the file is written
// to.
#pragma once  // include time: <string> is a result type

#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <string>

namespace norvik::kernel {

enum class FileKind { regular, directory, symbolicLink, characterDevice, blockDevice, pipe, socket, unknown };

/// Times are nanoseconds since 1970-01-01 00:00:00 UTC.
struct FileStatus {
  FileKind kind = FileKind::unknown;
  std::uint64_t size = 0;  ///< bytes
  std::uint32_t permissions = 0;
  std::uint32_t owner = 0, group = 0;
  std::uint64_t device = 0, inode = 0, links = 0;  ///< device and inode together are the file's identity
  std::int64_t modification = 0;
  std::int64_t creation = 0;
  bool hasBirthTime = false;  ///< the creation time comes from the file system
};

enum class Links { follow, stay };

/// 0 or an error number.
[[nodiscard]] NK_EXPORT int readFileStatus(const std::string& path, FileStatus& status, Links links = Links::follow);

/// For an open file. A stored creation time belongs to a path, so without a birth time this returns the earlier time.
[[nodiscard]] NK_EXPORT int readFileStatus(int descriptor, FileStatus& status);

/// True if the descriptor is open and still refers to that file. Also for signal handlers.
[[nodiscard]] NK_EXPORT bool isOpenFile(int descriptor, std::uint64_t device, std::uint64_t inode) noexcept;

/// Sets the lower twelve bits of the mode.
[[nodiscard]] NK_EXPORT int setPermissions(const std::string& path, unsigned permissions) noexcept;
[[nodiscard]] NK_EXPORT int setPermissions(int descriptor, unsigned permissions) noexcept;
/// For the folder itself: a symbolic link in its place is rejected.
[[nodiscard]] NK_EXPORT int setFolderPermissions(const std::string& path, unsigned permissions) noexcept;
[[nodiscard]] NK_EXPORT int setModificationTime(const std::string& path, std::int64_t unixNanoseconds) noexcept;

/// Call it after creating a file: stores the present time as its creation time if the file system has no birth times.
/// 0, also if nothing is to be done, or the error of storing it (EPERM if a link has replaced the file).
[[nodiscard]] NK_EXPORT int noteCreation(const std::string& path);

/// While an object of this class lives, every file system appears to have no birth times; for tests.
class NK_EXPORT WithoutBirthTimes {
 public:
  WithoutBirthTimes() noexcept;
  ~WithoutBirthTimes();
  WithoutBirthTimes(const WithoutBirthTimes&) = delete;
  WithoutBirthTimes& operator=(const WithoutBirthTimes&) = delete;
};

}  // namespace norvik::kernel
