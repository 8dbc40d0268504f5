// NorvikCore/platform/kernel/FileStatus.h - kind, size, owner and times of a file, its creation among them.
//
//   kernel::FileStatus status;
//   if (int error = kernel::readFileStatus(path, status)) return error;
//   status.creation;      // nanoseconds since 1970, unmoved by writes, renames and changed attributes
//
// The creation time is the file system's birth time. Where it keeps none (ramfs, some network disks) it is the time
// that noteCreation() kept as an attribute when the file was made, else the earlier of the times of the last write and
// the last change: the best that is known, though both move on when the file is written to.
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
  bool hasBirthTime = false;  ///< the creation time is the file system's
};

enum class Links { follow, stay };

/// 0 or an error number.
[[nodiscard]] NK_EXPORT int readFileStatus(const std::string& path, FileStatus& status, Links links = Links::follow);

/// Of an open file. A kept creation time belongs to a path, so without a birth time this one has to make do with the
/// earlier time.
[[nodiscard]] NK_EXPORT int readFileStatus(int descriptor, FileStatus& status);

/// True where the descriptor is open and is still that file. In signal handlers too.
[[nodiscard]] NK_EXPORT bool isOpenFile(int descriptor, std::uint64_t device, std::uint64_t inode) noexcept;

/// The lower twelve bits of the mode.
[[nodiscard]] NK_EXPORT int setPermissions(const std::string& path, unsigned permissions) noexcept;
[[nodiscard]] NK_EXPORT int setPermissions(int descriptor, unsigned permissions) noexcept;
/// Of the folder itself: a symbolic link in its place is refused.
[[nodiscard]] NK_EXPORT int setFolderPermissions(const std::string& path, unsigned permissions) noexcept;
[[nodiscard]] NK_EXPORT int setModificationTime(const std::string& path, std::int64_t unixNanoseconds) noexcept;

/// To be called by who has just made a file: keeps the present time as its creation time where the file system will
/// not. 0 or the error of keeping it (EPERM where a link has taken the file's place); nothing to do is success.
[[nodiscard]] NK_EXPORT int noteCreation(const std::string& path);

/// Makes every file system look like one without birth times while one of these lives; for tests.
class NK_EXPORT WithoutBirthTimes {
 public:
  WithoutBirthTimes() noexcept;
  ~WithoutBirthTimes();
  WithoutBirthTimes(const WithoutBirthTimes&) = delete;
  WithoutBirthTimes& operator=(const WithoutBirthTimes&) = delete;
};

}  // namespace norvik::kernel
