#include "NorvikCore/platform/kernel/internal/OwnFile.h"

#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace norvik::kernel {
namespace {

constexpr int mostLinks = 40;  // the kernel's limit

/// Reads the status of one part of a path. A link's target is read by the descriptor by which its owner was read.
int examine(const std::string& path, FileStatus& status, std::string& target) {
  const FileDescriptor part(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!part.isOpen()) return errno;
  if (const int error = readFileStatus(part.get(), status)) return error;
  if (status.kind != FileKind::symbolicLink) return 0;
  char text[PATH_MAX];
  const ssize_t length = readlinkat(part.get(), "", text, sizeof text);
  if (length < 0) return errno;
  target.assign(text, static_cast<std::size_t>(length));
  return 0;
}

/// Removes the first part from the path and returns it.
std::string takePart(std::string& path) {
  const std::size_t start = path.find_first_not_of('/');
  if (start == path.npos) {
    path.clear();
    return "";
  }
  const std::size_t end = std::min(path.find('/', start), path.size());
  std::string part = path.substr(start, end - start);
  path.erase(0, end);
  return part;
}

bool mayEverybodyWrite(const FileStatus& status) noexcept {
  return status.kind == FileKind::directory && (status.permissions & S_IWOTH) != 0;
}

}  // namespace

int resolveOwnPath(const std::string& path, OwnPath& result) {
  result = {};
  FileStatus status;
  if (const int error = readFileStatus("/", status)) return error;
  result.isShared = mayEverybodyWrite(status);
  std::string rest = path;
  int links = 0;
  for (std::string part = takePart(rest); !part.empty(); part = takePart(rest)) {
    if (part == ".") continue;
    if (part == "..") {
      result.path.resize(std::min(result.path.rfind('/'), result.path.size()));
      continue;
    }
    const std::string next = result.path + "/" + part;
    std::string target;
    if (const int error = examine(next, status, target)) {
      if (error != ENOENT && error != ENOTDIR) return error;
      result.path = next + rest;
      return 0;
    }
    if (!isTrusted(status, result.isShared)) {
      result.foreign = next;
      return EPERM;
    }
    if (status.kind == FileKind::symbolicLink) {
      if (++links > mostLinks) return ELOOP;
      if (target.starts_with('/')) result.path.clear();
      rest = target + rest;
      continue;
    }
    result.isShared = result.isShared || mayEverybodyWrite(status);
    result.path = next;
  }
  result.exists = true;
  return readFileStatus(result.path, result.status, Links::stay);
}

bool isTrusted(const FileStatus& status, bool isShared) noexcept {
  return !isShared || status.owner == 0 || status.owner == geteuid();
}

int makeOwnFile(const std::string& path) noexcept {
  return mknod(path.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) == 0 ? 0 : errno;
}

int readOwnFile(const std::string& path, std::size_t most, std::string& text) {
  text.clear();
  OwnPath own;
  if (const int error = resolveOwnPath(path, own)) return error;
  if (!own.exists) return ENOENT;
  FileDescriptor file;
  if (const int error = openFile(own.path, {.read = true, .regular = true}, file)) return error;
  FileStatus status;
  if (const int error = readFileStatus(file.get(), status)) return error;
  if (!isTrusted(status, own.isShared)) return EPERM;  // the file was replaced meanwhile
  constexpr std::size_t step = 16384;
  for (;;) {
    const std::size_t length = text.size(), wanted = std::min(step, most + 1 - length);
    text.resize(length + wanted);
    std::size_t count = 0;
    int error = readAt(file.get(), length, text.data() + length, wanted, &count);
    text.resize(length + count);
    if (error == 0 && text.size() > most) error = EFBIG;
    if (error != 0) text.clear();
    if (error != 0 || count < wanted) return error;
  }
}

int setPermissionsOfFile(const std::string& path, unsigned permissions) noexcept {
  const int descriptor = open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const FileDescriptor file(descriptor);
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return errno;
  if (S_ISLNK(status.st_mode)) return ELOOP;
  char name[32];
  std::snprintf(name, sizeof name, "/proc/self/fd/%d", descriptor);
  return chmod(name, permissions) == 0 ? 0 : errno;
}

int mayWrite(const std::string& path) noexcept {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

}  // namespace norvik::kernel
