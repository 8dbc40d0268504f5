#include "NorvikCore/platform/kernel/Directory.h"

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/Paths.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string_view>
#include <utility>

namespace norvik::kernel {
namespace {

constexpr unsigned writableByOthers = S_IWGRP | S_IWOTH;

bool isDirectory(const std::string& path) noexcept {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

int makeOne(const std::string& path, unsigned mode) noexcept {
  if (mkdir(path.c_str(), mode) == 0) return 0;
  const int error = errno;
  // Errors other than EEXIST also occur for an existing folder: EROFS on a read-only disk, EACCES without write
  // permission.
  return isDirectory(path) ? 0 : error;
}

int failedAt(const std::string& path, int error, std::string* failedPath) {
  if (error != 0 && failedPath) *failedPath = path;
  return error;
}

// Appends the names and closes the folder.
int takeNames(DIR* opened, std::vector<std::string>& names) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opened, closedir);
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(folder.get());
    if (!entry) return errno;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
}

std::string withoutSlashesAtEnd(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// An entry that the system never removes must not be emptied first.
int checkName(std::string_view path) noexcept {
  if (path == "/") return EBUSY;
  const std::string_view name = path.substr(path.rfind('/') + 1);
  return name == "." || name == ".." ? EINVAL : 0;
}

struct Identity {
  dev_t device = 0;
  ino_t inode = 0;
  bool operator==(const Identity&) const = default;
};

// Empties a folder. Each entry is removed by its name in an open folder, so the depth is not limited, and a link that
// another process meanwhile puts in a folder's place is not followed. At most three descriptors are open.
class TreeRemoval {
 public:
  explicit TreeRemoval(std::string path) : path_(std::move(path)) {}

  int emptyFolder(std::string* failedPath) {
    Level top;
    int error = open(AT_FDCWD, path_.c_str(), top, folder_);
    if (error != 0) return failedAt(path_, error, failedPath);
    levels_.push_back(std::move(top));
    while (!(levels_.size() == 1 && levels_.back().names.empty())) {
      std::string name;
      if (levels_.back().names.empty()) {
        name = std::move(levels_.back().name);
        levels_.pop_back();
        error = goUp();
        if (error == 0) error = removeOne(name, AT_REMOVEDIR);
      } else {
        name = std::move(levels_.back().names.back());
        levels_.back().names.pop_back();
        error = removeOrEnter(name);
      }
      if (error != 0) return failedAt(pathOf(name), error, failedPath);
    }
    return 0;
  }

 private:
  struct Level {
    std::string name;  ///< its name in the folder above
    Identity identity;
    std::vector<std::string> names;  ///< entries that are still to be removed
  };

  static int open(int above, const char* name, Level& level, FileDescriptor& folder) {
    FileDescriptor opened(openat(above, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened.isOpen()) return errno;
    if (const int error = identify(opened, level.identity)) return error;
    FileDescriptor listed(fcntl(opened.get(), F_DUPFD_CLOEXEC, 0));
    DIR* const list = listed.isOpen() ? fdopendir(listed.get()) : nullptr;
    if (!list) return errno;
    static_cast<void>(listed.release());
    folder = std::move(opened);
    return takeNames(list, level.names);
  }

  static int identify(const FileDescriptor& folder, Identity& identity) noexcept {
    struct stat status {};
    if (fstat(folder.get(), &status) != 0) return errno;
    identity = {status.st_dev, status.st_ino};
    return 0;
  }

  // Success also if the entry no longer exists.
  int removeOne(const std::string& name, int flags) noexcept {
    return unlinkat(folder_.get(), name.c_str(), flags) == 0 || errno == ENOENT ? 0 : errno;
  }

  // An empty folder is not entered, because this user may not be permitted to leave it through "..".
  int removeOrEnter(const std::string& name) {
    const int refusal = removeOne(name, 0);
    if (refusal != EISDIR && refusal != EPERM) return refusal;
    Level below;
    FileDescriptor folder;
    const int error = open(folder_.get(), name.c_str(), below, folder);
    if (error == ENOENT) return 0;
    if (error == ENOTDIR || error == ELOOP) return refusal;
    if (error != 0) return error;
    if (below.names.empty()) return removeOne(name, AT_REMOVEDIR);
    below.name = name;
    levels_.push_back(std::move(below));
    folder_ = std::move(folder);
    return 0;
  }

  // ENOENT if the folder has been moved elsewhere meanwhile.
  int goUp() noexcept {
    FileDescriptor above(openat(folder_.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!above.isOpen()) return errno;
    Identity identity;
    if (const int error = identify(above, identity)) return error;
    if (identity != levels_.back().identity) return ENOENT;
    folder_ = std::move(above);
    return 0;
  }

  std::string pathOf(const std::string& name) const {
    std::string path = path_;
    for (std::size_t i = 1; i < levels_.size(); ++i) path += "/" + levels_[i].name;
    return path + "/" + name;
  }

  const std::string path_;
  std::vector<Level> levels_;  ///< from the top folder down
  FileDescriptor folder_;      ///< the folder of the last level
};

}  // namespace

int createDirectories(const std::string& path, unsigned mode, std::string* failedPath) {
  if (path.size() >= PATH_MAX) return failedAt(path, ENAMETOOLONG, failedPath);
  for (std::size_t at = 0; at < path.size();) {
    at = path.find('/', at);
    if (at == path.npos) break;
    const std::string above = path.substr(0, at++);
    if (above.empty() || isDirectory(above)) continue;
    if (const int error = makeOne(above, mode)) return failedAt(above, error, failedPath);
  }
  return path.ends_with('/') && isDirectory(path) ? 0 : failedAt(path, makeOne(path, mode), failedPath);
}

int createDirectory(const std::string& path, unsigned mode) noexcept {
  return mkdir(path.c_str(), mode) == 0 ? 0 : errno;
}

int checkOwnDirectory(const std::string& path) noexcept {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return errno;
  const bool isOwn = S_ISDIR(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & writableByOthers) == 0;
  return isOwn ? 0 : EPERM;
}

int createOwnDirectory(const std::string& path, unsigned mode) noexcept {
  const int error = createDirectory(path, mode & ~writableByOthers);
  const int refusal = checkOwnDirectory(path);
  return refusal == ENOENT && error != 0 ? error : refusal;
}

int listDirectory(const std::string& path, std::vector<std::string>& names) {
  names.clear();
  DIR* const folder = opendir(path.c_str());
  return folder ? takeNames(folder, names) : errno;
}

int removeTree(const std::string& path, std::string* failedPath) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return failedAt(path, errno, failedPath);
  // Without trailing slashes, because with one a link would be followed.
  const std::string thing = withoutSlashesAtEnd(path);
  if (const int error = checkName(thing)) return failedAt(path, error, failedPath);
  if (lstat(thing.c_str(), &status) != 0) return failedAt(path, errno, failedPath);
  if (S_ISDIR(status.st_mode)) {
    if (const int error = TreeRemoval(thing).emptyFolder(failedPath)) return error;
  }
  // Inside the tree side files are ordinary entries; those of the removed entry itself are beside it.
  return failedAt(path, removeWithAttributes(thing), failedPath);
}

int makeTemporaryDirectory(const std::string& prefix, std::string& path) {
  std::string name = temporaryDirectory() + "/" + prefix + "XXXXXX";
  if (!mkdtemp(name.data())) return errno;
  path = std::move(name);
  return 0;
}

}  // namespace norvik::kernel
