#include "NorvikCore/platform/kernel/ReplaceFile.h"

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/UUID.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <memory>

namespace norvik::kernel {
namespace {

int writeAndClose(FileDescriptor& file, std::string_view content) {
  const int error = writeAll(file.get(), content);
  const int closeError = file.close();
  return error != 0 ? error : closeError;
}

/// EEXIST if the file exists. A file that could not be written whole is removed.
int writeNew(const std::string& path, std::string_view content) {
  FileDescriptor file;
  if (const int error = openFile(path, {.write = true, .create = true, .exclusive = true}, file)) return error;
  const int error = writeAndClose(file, content);
  if (error != 0) unlink(path.c_str());
  // A failure to store the creation time is ignored, because the file itself is complete.
  if (error == 0) static_cast<void>(noteCreation(path));
  return error;
}

int writeInPlace(const std::string& path, std::string_view content) {
  FileDescriptor file;
  const int error = openFile(path, {.write = true, .create = true, .truncate = true}, file);
  return error != 0 ? error : writeAndClose(file, content);
}

/// Creates `draft` with the content, and the owner, permissions and attributes of `old`.
int writeDraft(const std::string& draft, std::string_view content, const std::string& old, const FileStatus& status) {
  FileDescriptor file;
  if (const int error = openFile(draft, {.write = true, .create = true, .exclusive = true, .mode = 0600}, file)) {
    return error;
  }
  FileStatus made;
  int error = readFileStatus(file.get(), made);
  if (error == 0 && (made.owner != status.owner || made.group != status.group) &&
      fchown(file.get(), status.owner, status.group) != 0) {
    error = errno;
  }
  if (error == 0) error = copyAttributes(old, draft);
  if (error == 0) error = setPermissions(file.get(), status.permissions);
  if (error == 0) error = writeAll(file.get(), content);
  if (error == 0) error = synchronize(file.get());
  if (const int closeError = file.close(); error == 0) error = closeError;
  if (error != 0) static_cast<void>(removeWithAttributes(draft));
  return error;
}

/// The file has an access list, which says more than its permissions.
bool hasAccessList(const std::string& path) {
  return getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

/// The process may write the file, but not make another one like it.
bool isForbidden(int error) { return error == EACCES || error == EPERM || error == ENAMETOOLONG; }

}  // namespace

int replaceFile(const std::string& path, std::string_view content) {
  int error = writeNew(path, content);
  if (error != EEXIST) return error;

  FileStatus status;
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), free);
  const std::string target = resolved ? resolved.get() : path;
  const bool isReplaceable = resolved && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) == 0 &&
                             readFileStatus(target, status) == 0 && status.kind == FileKind::regular &&
                             status.links == 1 && !hasAccessList(target);
  if (isReplaceable) {
    const std::size_t name = target.rfind('/') + 1;
    const std::string draft = target.substr(0, name) + "." + makeUUID().text() + ".new";
    error = writeDraft(draft, content, target, status);
    if (error == 0) {
      error = renameWithAttributes(draft, target);
      if (error != 0) static_cast<void>(removeWithAttributes(draft));
    }
    if (!isForbidden(error)) return error;
  }
  return writeInPlace(path, content);
}

}  // namespace norvik::kernel
