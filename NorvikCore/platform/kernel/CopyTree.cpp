#include "NorvikCore/platform/kernel/CopyTree.h"

#include "NorvikCore/platform/kernel/Directory.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"

#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <memory>
#include <string_view>

namespace norvik::kernel {
namespace {

int copyContent(const std::string& from, const std::string& to) {
  FileDescriptor source, target;
  if (const int error = openFile(from, {.read = true, .regular = true}, source)) return error;
  if (const int error = openFile(to, {.write = true, .create = true, .exclusive = true, .mode = 0600}, target)) {
    return error;
  }
  const auto buffer = std::make_unique<std::byte[]>(1U << 17U);
  for (;;) {
    const ssize_t count = read(source.get(), buffer.get(), 1U << 17U);
    if (count == 0) return target.close();
    if (count < 0 && errno != EINTR) return errno;
    const std::string_view bytes(reinterpret_cast<const char*>(buffer.get()),
                                 count > 0 ? static_cast<std::size_t>(count) : 0);
    if (const int error = writeAll(target.get(), bytes)) return error;
  }
}

int copyLink(const std::string& from, const std::string& to) {
  char target[PATH_MAX];
  const ssize_t length = readlink(from.c_str(), target, sizeof target);
  if (length < 0) return errno;
  return symlink(std::string(target, static_cast<std::size_t>(length)).c_str(), to.c_str()) == 0 ? 0 : errno;
}

int copyAttributes(const std::string& from, const std::string& to) {
  std::vector<std::string> names;
  if (const int error = listAttributes(from, names)) return error;
  for (const std::string& name : names) {
    std::string value;
    if (const int error = getAttribute(from, name, value)) return error;
    if (const int error = setAttribute(to, name, value)) return error;
  }
  return 0;
}

int copyOne(const std::string& from, const std::string& to, const FileStatus& status);

int copyEntries(const std::string& from, const std::string& to) {
  std::vector<std::string> names;
  if (const int error = listDirectory(from, names)) return error;
  leaveOutSideFiles(from, names);
  for (const std::string& name : names) {
    FileStatus status;
    if (const int error = readFileStatus(from + "/" + name, status, Links::stay)) return error;
    if (const int error = copyOne(from + "/" + name, to + "/" + name, status)) return error;
  }
  return 0;
}

// Sets the permissions after the content, because a folder that is not writable must get its entries first. Sets the
// time last, because adding content changes it.
int copyOne(const std::string& from, const std::string& to, const FileStatus& status) {
  if (status.kind == FileKind::symbolicLink) return copyLink(from, to);
  if (status.kind == FileKind::directory) {
    if (const int error = createDirectory(to, 0700)) return error;
    if (const int error = copyEntries(from, to)) return error;
  } else if (status.kind == FileKind::regular) {
    if (const int error = copyContent(from, to)) return error;
  } else {
    return ENOTSUP;
  }
  if (const int error = copyAttributes(from, to)) return error;
  if (const int error = setPermissions(to, status.permissions)) return error;
  return setModificationTime(to, status.modification);
}

// The path without links and dots; empty if it does not exist.
std::string resolved(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> text(realpath(path.c_str(), nullptr), free);
  return text ? text.get() : "";
}

bool isInside(const std::string& path, const std::string& folder) {
  const std::size_t slash = path.rfind('/');
  const std::string parent = resolved(slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash));
  const std::string whole = resolved(folder);
  return parent == whole || parent.starts_with(whole + "/");
}

}  // namespace

int copyTree(const std::string& from, const std::string& to) {
  FileStatus source, target;
  if (const int error = readFileStatus(from, source, Links::stay)) return error;
  if (to.empty()) return ENOENT;
  if (readFileStatus(to, target, Links::stay) == 0) return EEXIST;
  if (source.kind == FileKind::directory && isInside(to, from)) return EINVAL;
  const int error = copyOne(from, to, source);
  // EEXIST: another process has created something there meanwhile, which must not be removed.
  if (error != 0 && error != EEXIST) static_cast<void>(removeTree(to));
  return error;
}

}  // namespace norvik::kernel
