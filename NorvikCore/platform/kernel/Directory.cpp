#include "NorvikCore/platform/kernel/Directory.h"

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/Paths.h"

#include <dirent.h>
#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string_view>

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
  // Not only EEXIST: a folder that is there on a read-only disk gives EROFS, one that may not be written to EACCES.
  return isDirectory(path) ? 0 : error;
}

int failedAt(const std::string& path, int error, std::string* failedPath) {
  if (error != 0 && failedPath) *failedPath = path;
  return error;
}

}  // namespace

int createDirectories(const std::string& path, unsigned mode, std::string* failedPath) {
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
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
  if (!folder) return errno;
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(folder.get());
    if (!entry) return errno;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
}

int removeTree(const std::string& path, std::string* failedPath) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return failedAt(path, errno, failedPath);
  if (!S_ISDIR(status.st_mode)) return failedAt(path, removeWithAttributes(path), failedPath);
  std::vector<std::string> names;
  if (const int error = listDirectory(path, names)) return failedAt(path, error, failedPath);
  for (const std::string& name : names) {
    const int error = removeTree(path + "/" + name, failedPath);
    // A side file leaves with the file it belongs to.
    if (error != 0 && error != ENOENT) return error;
  }
  return failedAt(path, removeWithAttributes(path), failedPath);
}

int makeTemporaryDirectory(const std::string& prefix, std::string& path) {
  std::string name = temporaryDirectory() + "/" + prefix + "XXXXXX";
  if (!mkdtemp(name.data())) return errno;
  path = std::move(name);
  return 0;
}

}  // namespace norvik::kernel
