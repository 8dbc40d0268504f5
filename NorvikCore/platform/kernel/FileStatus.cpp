#include "NorvikCore/platform/kernel/FileStatus.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <optional>

namespace norvik::kernel {
namespace {

constexpr std::string_view creationAttribute = "norvik.created";

std::atomic<int> birthTimesHidden{0};

std::int64_t nanoseconds(const statx_timestamp& time) noexcept {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

FileKind kindOf(unsigned mode) noexcept {
  switch (mode & S_IFMT) {
    case S_IFREG:
      return FileKind::regular;
    case S_IFDIR:
      return FileKind::directory;
    case S_IFLNK:
      return FileKind::symbolicLink;
    case S_IFCHR:
      return FileKind::characterDevice;
    case S_IFBLK:
      return FileKind::blockDevice;
    case S_IFIFO:
      return FileKind::pipe;
    case S_IFSOCK:
      return FileKind::socket;
    default:
      return FileKind::unknown;
  }
}

int read(int folder, const char* path, int flags, FileStatus& status) noexcept {
  struct statx raw {};
  if (statx(folder, path, flags, STATX_BASIC_STATS | STATX_BTIME, &raw) != 0) return errno;
  status.kind = kindOf(raw.stx_mode);
  status.size = raw.stx_size;
  status.permissions = raw.stx_mode & 07777U;
  status.owner = raw.stx_uid;
  status.group = raw.stx_gid;
  status.device = makedev(raw.stx_dev_major, raw.stx_dev_minor);
  status.inode = raw.stx_ino;
  status.links = raw.stx_nlink;
  status.modification = nanoseconds(raw.stx_mtime);
  // Some file systems report a known birth time but leave it at 0.
  status.hasBirthTime = (raw.stx_mask & STATX_BTIME) != 0 && raw.stx_btime.tv_sec != 0 && birthTimesHidden.load() == 0;
  status.creation = status.hasBirthTime ? nanoseconds(raw.stx_btime)
                                        : std::min(nanoseconds(raw.stx_mtime), nanoseconds(raw.stx_ctime));
  return 0;
}

std::optional<std::int64_t> keptCreation(const std::string& path) {
  std::string text;
  if (getAttribute(path, creationAttribute, text) != 0) return std::nullopt;
  std::int64_t time = 0;
  const char* const end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, time);
  if (error != std::errc() || next != end) return std::nullopt;
  return time;
}

}  // namespace

int readFileStatus(const std::string& path, FileStatus& status, Links links) {
  FileStatus found;
  const int flags = links == Links::stay ? AT_SYMLINK_NOFOLLOW : 0;
  if (const int error = read(AT_FDCWD, path.c_str(), flags, found)) return error;
  if (!found.hasBirthTime && found.kind != FileKind::symbolicLink) {
    if (const auto kept = keptCreation(path)) found.creation = *kept;
  }
  status = found;
  return 0;
}

int readFileStatus(int descriptor, FileStatus& status) { return read(descriptor, "", AT_EMPTY_PATH, status); }

bool isOpenFile(int descriptor, std::uint64_t device, std::uint64_t inode) noexcept {
  struct stat status {};
  return descriptor >= 0 && fstat(descriptor, &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

int setPermissions(const std::string& path, unsigned permissions) noexcept {
  return chmod(path.c_str(), permissions) == 0 ? 0 : errno;
}

int setPermissions(int descriptor, unsigned permissions) noexcept {
  return fchmod(descriptor, permissions) == 0 ? 0 : errno;
}

int setFolderPermissions(const std::string& path, unsigned permissions) noexcept {
  const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const FileDescriptor folder(descriptor);
  return setPermissions(folder.get(), permissions);
}

int setModificationTime(const std::string& path, std::int64_t unixNanoseconds) noexcept {
  constexpr std::int64_t perSecond = 1'000'000'000;
  const std::int64_t rest = (unixNanoseconds % perSecond + perSecond) % perSecond;
  const timespec times[2] = {{0, UTIME_OMIT}, {(unixNanoseconds - rest) / perSecond, rest}};
  return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0 ? 0 : errno;
}

int noteCreation(const std::string& path) {
  FileStatus status;
  if (const int error = read(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, status)) return error;
  if (status.hasBirthTime) return 0;
  return setAttribute(path, creationAttribute, std::to_string(wallNanoseconds()), Links::stay);
}

WithoutBirthTimes::WithoutBirthTimes() noexcept { ++birthTimesHidden; }
WithoutBirthTimes::~WithoutBirthTimes() { --birthTimesHidden; }

}  // namespace norvik::kernel
